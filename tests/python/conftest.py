"""Where the tests find the command and the data: VELTRA is the command that was built, beside the package in PYTHONPATH."""

import json
import os
import pathlib
import subprocess

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[2]


@pytest.fixture(scope="session")
def vectors():
    return ROOT / "tests/vectors"


@pytest.fixture(scope="session")
def corpus():
    return ROOT / "fuzz/corpus"


@pytest.fixture(scope="session")
def command():
    """Runs the command and gives its JSON; None if it gives none."""

    def run(*arguments, **options):
        answer = subprocess.run([os.environ["VELTRA"], "-q", *arguments, "-f", "json"], capture_output=True, **options)
        return json.loads(answer.stdout) if answer.stdout.strip() else None

    return run


@pytest.fixture
def settings():
    """A record with secrets, as it stands in a section."""
    return (ROOT / "tests/data/good/orbel_settings_v0.bin").read_bytes()


@pytest.fixture
def write(tmp_path):
    """Writes a result file with sections of bytes."""
    import veltra

    def make(name, *payloads, type=300, compress=None, **summary):
        path = tmp_path / name
        path.parent.mkdir(exist_ok=True)
        with veltra.create(path) as out:
            out.summary(**{"id": path.stem, "verdict": "Pass", "time": 1700000000, **summary})
            for payload in payloads:
                out.add(type, payload, compress=compress)
        return path

    return make
