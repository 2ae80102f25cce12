"""Many results as rows."""

import os
import pickle
import subprocess

import pandas
import pytest
import veltra


def rows_of(frame):
    """The rows of a frame as the command says them."""
    rows = frame.drop(columns=["damaged", "error"]).copy()
    rows["time"] = rows["time"].dt.strftime("%Y-%m-%dT%H:%M:%SZ")
    return [{name: None if pandas.isna(value) else value for name, value in row.items()}
            for row in rows.astype(object).to_dict("records")]


def test_rows_are_those_of_the_command(vectors, command, write, tmp_path):
    write("more/A10.vres", length="> 1000", headroom="-inf", time=0, verdict="Fail star", type="COPPER")
    write("more/A2.vres", length="---", headroom="12.3456", num_fail_tests=-3)
    paths = [vectors, tmp_path / "more"]
    told = command("summary", "-r", *paths)["results"]
    assert told[0]["id"] is not None and len(told) > 60
    results = list(veltra.results(paths))
    known, lost = results[:len(told)], results[len(told):]
    assert [result.as_dict() for result in known] == told
    for result, row in zip(known, told):
        assert (result.id, result.verdict, result.headroom) == (row["id"], row["status"], row["headroom"])
        assert (result.length, result.length_relation) == (row["length"], row["lengthRelation"])
        assert not result.time or result.time.strftime("%Y-%m-%dT%H:%M:%SZ") == row["time"]
    assert lost and all(each.id is None and each.damaged and each.error.startswith(each.file) for each in lost)
    assert {result.file for result in results if result.damaged} >= {
        each["file"] for each in command("doctor", "-r", *paths)["files"] if each["damaged"]}

    frame = veltra.frame(paths)
    table = subprocess.run([os.environ["VELTRA"], "summary", "-rq", *paths, "-f", "csv"], capture_output=True)
    assert list(frame.columns) == [*table.stdout.split(b"\n")[0].decode().split(","), "damaged", "error"]
    for row in told:  # a time of 0 is none in a frame
        row["time"] = None if row["time"] == "1970-01-01T00:00:00Z" else row["time"]
    made = rows_of(frame)
    for row, wanted in zip(made, told):
        if wanted["time"] and not "1678" < wanted["time"] < "2262":
            wanted["time"] = None
        assert row == wanted
    assert list(frame.error.dropna()) == [each.error for each in results if each.error]
    assert list(frame.damaged) == [each.damaged for each in results]
    assert pickle.loads(pickle.dumps(results)) == results and results[0] != results[1]

    unsorted = veltra.frame(paths, unsorted=True)
    files = [os.fspath(each) for path in paths for each in sorted(path.rglob("*.vres"))]
    assert list(unsorted.file) == [file for file in files if file in set(frame.file)]
    assert sorted(unsorted.file) == sorted(frame.file)
    for processes in (2, 3):
        pandas.testing.assert_frame_equal(veltra.frame(paths, processes=processes), frame)


def test_types_do_not_depend_on_the_rows(vectors, tmp_path):
    full, empty = veltra.frame(vectors), veltra.frame(tmp_path)
    lost = veltra.frame(["/nowhere.vres", tmp_path / "gone.vres"])
    assert len(empty) == 0 and (full.dtypes == empty.dtypes).all() and (full.dtypes == lost.dtypes).all()
    assert str(full.time.dtype) == "datetime64[ns, UTC]" and full.headroom.dtype == float
    assert (full.status < "Fail").any() and (full.status >= "Fail").any()
    assert list(lost.error) == ["/nowhere.vres: No such file or directory", f"{tmp_path}/gone.vres: No such file or directory"]
    assert lost.drop(columns=["file", "damaged", "error"]).isna().all().all() and lost.damaged.all()


def test_what_a_slice_cannot_tell(write, tmp_path):
    """A file that is no container is a lost result where others of its extension are results, in whatever part."""
    write("job/a.vres"), write("job/b.vres")
    (tmp_path / "job/c.vres").write_text("no container")
    (tmp_path / "job/d.txt").write_text("nor this")
    whole = veltra.frame(tmp_path / "job")
    assert [os.path.basename(file) for file in whole.file] == ["a.vres", "b.vres", "c.vres"]
    run = veltra._run(tmp_path / "job", True)
    parts = run.with_extensions(run.extensions()).parts(4)
    rows = veltra._veltra.Rows()
    for part in map(pickle.loads, map(pickle.dumps, parts)):
        rows.extend(pickle.loads(pickle.dumps(part.read(True, 1))))
    from veltra import _frames

    pandas.testing.assert_frame_equal(_frames.frame_of(rows), whole)
    assert list(veltra.frame([tmp_path / "job/d.txt", tmp_path / "job/a.vres"]).damaged) == [False, True]


@pytest.mark.parametrize("wrong", [{"processes": 0}, {"threads": -1}, {"processes": 2.5}, {"threads": "all"}])
def test_wrong_counts(vectors, wrong):
    with pytest.raises((ValueError, TypeError), match=next(iter(wrong))):
        veltra.frame(vectors, **wrong)
