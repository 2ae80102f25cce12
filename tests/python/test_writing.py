"""What Python writes is what the command writes, whole or not at all."""

import datetime
import decimal
import json
import os
import re
import resource
import shutil

import numpy
import pandas
import pytest
import veltra

TRACE = bytes(range(256)) * 64


def test_bytes_are_those_of_pack(tmp_path, command):
    (tmp_path / "trace").write_bytes(TRACE)
    description = {
        "summary": {"resultName": "A-01 größe", "resultType": "FIBER", "status": "Pass star", "headroom": "> 12.50",
                    "timeStamp": "2024-01-31T09:15:00Z", "length": "42.5", "testFlags": [1, 2147483648],
                    "numPassTests": 12, "numFailTests": -128},
        "sections": [{"type": 300, "version": 12, "payload": "trace", "compress": True},
                     {"type": "OTDR_END_1_RAW", "payload": "trace"}],
    }
    (tmp_path / "result.json").write_text(json.dumps(description))
    command("pack", "result.json", "-o", "packed.vres", "--level", "9", cwd=tmp_path)
    time = datetime.datetime(2024, 1, 31, 10, 15, tzinfo=datetime.timezone(datetime.timedelta(hours=1)))
    for length in (42.5, "42.5", decimal.Decimal("42.5")):
        with veltra.create(tmp_path / "created.vres", force=True) as out:
            out.summary(id="A-01 größe", type="FIBER", verdict="Pass star", headroom="> 12.50", time=time, length=length,
                        test_flags=numpy.array([1, 1 << 31]), num_pass_tests=numpy.int8(12), num_fail_tests=-128)
            out.add(numpy.uint16(300), memoryview(TRACE), version=12, compress=9)
            out.add("OTDR_END_1_RAW", bytearray(TRACE))
        assert (tmp_path / "created.vres").read_bytes() == (tmp_path / "packed.vres").read_bytes()
    with veltra.open(tmp_path / "created.vres") as file:
        assert file.sections[2].read() == file.sections[3].read() == TRACE
        assert file.result.time == time and file.result.length == 42.5


def test_what_cannot_be_written_is_refused(tmp_path):
    path = tmp_path / "new.vres"
    refused = [{"id": 7}, {"verdict": "Great"}, {"length": 1e-7}, {"headroom": float("nan"), "length": "long"},
               {"time": datetime.datetime(2024, 1, 1)}, {"num_pass_tests": 200}, {"test_flags": [3]}, {"time": 1 << 70},
               {"time": 1.5}, {"time": pandas.Timestamp(1, tz="UTC")}, {"id": "\ud800"}]
    with veltra.create(path) as out:
        for members in refused:
            with pytest.raises((ValueError, TypeError)):
                out.summary(**members)
        with pytest.raises(ValueError, match="no summary"):
            out.add(300, TRACE)
        out.summary(id="A-1")
        with pytest.raises(ValueError, match="second"):
            out.summary(id="A-2")
        for wrong in [(300, b""), (300, TRACE, 70000), (1, TRACE), (70000, TRACE), ("NO_SUCH", TRACE), (300, TRACE, 0, 10),
                      (300, TRACE, 0, -1), (300, "text"), (300, bytes((8 << 20) + 1), 0, 6), (300, None), (3.5, TRACE),
                      (300, memoryview(TRACE)[::2])]:
            with pytest.raises((ValueError, TypeError, BufferError)):
                out.add(wrong[0], wrong[1], **dict(zip(("version", "compress"), wrong[2:])))
        out.add(300, TRACE)
    with veltra.open(path) as file:
        assert len(file.sections) == 3 and not file.damaged
    with pytest.raises(ValueError, match="closed"):
        out.add(300, TRACE)


def test_the_old_file_stays(tmp_path):
    path = tmp_path / "old.vres"
    path.write_text("old")
    with pytest.raises(FileExistsError):
        veltra.create(path)
    with pytest.raises(KeyError), veltra.create(path, force=True) as out:
        out.summary(id="A-1")
        raise KeyError
    with pytest.raises(ValueError, match="no summary"), veltra.create(path, force=True):
        pass
    out = veltra.create(path, force=True)
    out.summary(id="A-1")
    del out
    limit = resource.getrlimit(resource.RLIMIT_FSIZE)
    resource.setrlimit(resource.RLIMIT_FSIZE, (8192, limit[1]))
    try:
        with pytest.raises(veltra.FileError) as full, veltra.create(path, force=True) as out:
            out.summary(id="A-1")
            out.add(300, TRACE)
    finally:
        resource.setrlimit(resource.RLIMIT_FSIZE, limit)
    assert full.value.code == "EFBIG" and full.value.file == os.fspath(path)
    assert path.read_text() == "old" and os.listdir(tmp_path) == ["old.vres"]
    for wrong, error in ((tmp_path / "no/such.vres", FileNotFoundError), ("/dev/full", ValueError), (tmp_path, ValueError)):
        with pytest.raises(error):
            veltra.create(wrong, force=True)


def test_the_page_runs_as_it_stands(tmp_path, vectors, monkeypatch, capsys):
    monkeypatch.chdir(tmp_path)
    shutil.copytree(vectors, "job")
    shutil.copy(vectors / "fibre.vres", "otdr-pass.vres")
    shutil.copy(vectors / "cut-in-payload.vres", "bad.vres")
    (block,) = re.findall(r"^```python\n(.*?)^```$", (vectors.parents[1] / "README.md").read_text(), re.M | re.S)
    exec(block, {})
    assert "A-017 Pass 1.3" in capsys.readouterr().out and {"new.vres", "good.vres"} < set(os.listdir())
