"""A cluster of two processes on this machine gives the rows of one."""

import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys

import dask.distributed
import pandas
import pytest
import veltra
import veltra.dask

ROOT = pathlib.Path(__file__).resolve().parents[2]
VECTORS = ROOT / "tests/vectors"


@pytest.fixture(scope="module")
def cluster():
    with dask.distributed.LocalCluster(
        n_workers=2, threads_per_worker=1, processes=True, dashboard_address=None, silence_logs=50
    ) as cluster, dask.distributed.Client(cluster):
        yield cluster


def in_order(frame):
    return frame.sort_values("file", ignore_index=True)


def test_rows_are_those_of_a_frame(cluster, tmp_path):
    shutil.copytree(VECTORS, tmp_path / "job")
    paths = [tmp_path / "job", tmp_path / "gone.vres", VECTORS / "f*.vres"]
    wanted = veltra.frame([*paths[:2], *sorted(VECTORS.glob("f*.vres"))], unsorted=True)
    for count in (1, 7, 100000, None):
        made = veltra.dask.frame(paths, count)
        assert (made.dtypes == wanted.dtypes).all() and (made.npartitions == (count or 1) or count == 100000)
        pandas.testing.assert_frame_equal(made.compute().reset_index(drop=True), wanted)
    assert wanted.error.str.endswith("No such file or directory").sum() == 1
    by_verdict = veltra.dask.frame(paths, 5).groupby("status").headroom.min().compute()
    pandas.testing.assert_series_equal(by_verdict, wanted.groupby("status").headroom.min())
    shutil.copytree(VECTORS, tmp_path / "job/again.vres")
    files = sorted(os.fspath(file) for file in tmp_path.rglob("*.vres") if file.is_file())
    deep = veltra.dask.frame(tmp_path / "**/*.vres").compute()  # each file once, in whatever folder
    pandas.testing.assert_frame_equal(deep.reset_index(drop=True), veltra.frame(files, unsorted=True))
    with pytest.raises(FileNotFoundError):
        veltra.dask.frame(tmp_path / "none-*.vres")
    for wrong in ({"npartitions": 0}, {"npartitions": 2.5}, {"threads": -1}):
        with pytest.raises((ValueError, TypeError), match=next(iter(wrong))):
            veltra.dask.frame(VECTORS, **wrong)


def test_what_vanishes_is_a_row(cluster, tmp_path):
    for name in "abc":
        shutil.copy(VECTORS / "fibre.vres", tmp_path / f"{name}.vres")
    made = veltra.dask.frame(str(tmp_path / "*.vres"), npartitions=3)
    (tmp_path / "b.vres").unlink()  # nothing was read before it is asked for
    rows = made.compute()
    assert list(rows.error.isna()) == [True, False, True] and list(rows.damaged) == [False, True, False]
    # A file that is no container is a lost result where a file of another partition is a result of its extension.
    (tmp_path / "d.vres").write_text("no container")
    assert list(veltra.dask.frame(tmp_path, npartitions=3).compute().damaged) == [False, False, True]


def kill_once(rows, flag):
    """Ends the process of the first worker that comes here."""
    try:
        os.close(os.open(flag, os.O_CREAT | os.O_EXCL))
    except FileExistsError:
        return rows
    os.kill(os.getpid(), signal.SIGKILL)


def test_a_worker_that_is_killed_changes_nothing(cluster, tmp_path):
    made = veltra.dask.frame(VECTORS, npartitions=20)
    flag = tmp_path / "killed"
    rows = made.map_partitions(kill_once, os.fspath(flag), meta=made._meta).compute()
    assert flag.exists()
    pandas.testing.assert_frame_equal(in_order(rows), in_order(veltra.frame(VECTORS)))


def test_example_and_page(tmp_path):
    """The example plots a job; the Python on the page runs as it stands."""
    shutil.copytree(VECTORS, tmp_path / "job")
    answer = subprocess.run([sys.executable, ROOT / "examples/headroom.py", "job", "plot.png", "table.csv"], cwd=tmp_path,
                            capture_output=True, text=True, check=True)
    assert re.fullmatch(r"\d+ of \d+ results in plot.png, all in table.csv\n", answer.stdout)
    assert (tmp_path / "plot.png").read_bytes().startswith(b"\x89PNG")
    assert len(pandas.read_csv(tmp_path / "table.csv", encoding_errors="surrogateescape")) == len(veltra.frame(tmp_path / "job"))
    (block,) = re.findall(r"^```python\n(.*?)^```$", (ROOT / "docs/many-results.md").read_text(), re.M | re.S)
    script = "if __name__ == '__main__':\n    " + block.replace("\n", "\n    ")
    answer = subprocess.run([sys.executable, "-c", script], cwd=tmp_path, capture_output=True, text=True)
    assert answer.returncode == 0 and "Pass" in answer.stdout, block + answer.stderr
