"""What Python says of files is what the command says, and no file stops the interpreter."""

import concurrent.futures
import os
import pickle
import resource
import signal
import subprocess
import sys
import threading
import warnings

import pytest
import veltra


def test_a_file_is_what_the_command_says(vectors, command):
    files = sorted(map(str, vectors.glob("*.vres")))
    infos = {info["file"]: info for info in command("info", *files)["files"]}
    lists = {listed["file"]: listed["sections"] for listed in command("list", *files)["files"]}
    shown = []
    for path in files:
        try:
            file = veltra.open(path)
        except veltra.DamageError as error:
            assert error.code == "E02" and error.file == path
            continue
        with file:
            assert file.info() == infos[path]
            assert [section.as_dict() for section in file.sections] == lists[path]
            assert len(file.sections) == len(lists[path]) and file.damaged == infos[path]["damaged"]
            row = file.result.as_dict() if file.result else {}
            assert row.items() <= infos[path].items()
            for section in file.sections:
                try:
                    shown.append((path, section.number, section.show()))
                except veltra.DamageError as error:
                    assert error.offset == section.offset + 20 and error.code in {"E04", "E05", "E07", "E08"}
                    shown.append((path, section.number, None))
    assert len(shown) > 250
    with concurrent.futures.ThreadPoolExecutor(4) as pool:
        told = pool.map(lambda each: command("show", each[0], "-s", str(each[1])), shown)
    for (path, number, values), document in zip(shown, told):
        assert (document or {}).pop("schema", 1) == 1
        assert values == document, (path, number)


@pytest.mark.parametrize("depth", ["quick", "ordinary", "deep"])
def test_doctor(vectors, command, depth):
    option = [] if depth == "ordinary" else ["--" + depth]
    assert veltra.doctor(vectors, depth=depth) == command("doctor", "-r", vectors, *option)["files"]
    other, missing = veltra.doctor([vectors / "README.md", "/nowhere"], depth=depth)
    assert other["error"].startswith(f"{vectors}/README.md: not a container: ")
    assert missing == {"file": "/nowhere", "error": "/nowhere: No such file or directory"}


def test_secrets_are_masked(write, settings, command):
    path = write("settings.vres", settings, type="ORBEL_SETTINGS")
    with veltra.open(path) as file:
        section = file.sections[2]
        for reveal in (False, True):
            document = command("show", path, "-s", "2", *(["--reveal"] if reveal else []))
            assert section.show(reveal=reveal)["record"] == section.record(reveal=reveal) == document["record"]
        assert str(section.record()).count("********") > 0 == str(section.record(reveal=True)).count("********")
        assert section.read() == settings


def test_recover(vectors, command, tmp_path):
    for name in ("cut-in-payload", "never-closed", "fibre", "file-header-crc"):
        damaged = vectors / f"{name}.vres"
        document = command("recover", damaged, "-o", "by-command.vres", cwd=tmp_path)
        answer = veltra.recover(damaged, tmp_path / "by-python.vres", force=True)
        assert (answer.pop("output"), document.pop("output"), document.pop("schema")) and answer == document
        assert (tmp_path / "by-python.vres").read_bytes() == (tmp_path / "by-command.vres").read_bytes()
        (tmp_path / "by-command.vres").unlink()
    with pytest.raises(veltra.ExistingFileError):
        veltra.recover(damaged, tmp_path / "by-python.vres")
    with pytest.raises(veltra.DamageError) as caught:
        veltra.recover(vectors / "README.md", tmp_path / "nothing.vres")
    assert caught.value.code == "E02" and not (tmp_path / "nothing.vres").exists()


def test_job(write, command, tmp_path):
    write("job/1.vres", id="A-1")
    write("job/2.vres", id="A-2", verdict="Fail")
    write("job/again.vres", id="A-2", time=1700000100)
    (tmp_path / "job/4.vres").write_bytes(b"PF")
    with pytest.raises(ValueError, match="no expected IDs"):
        veltra.job(tmp_path / "job")
    for expected, count in ((["A-1..A-4"], "latest"), (["A-1", "B-7"], "all")):
        options = [word for each in expected for word in ("--expect", each)]
        document = command("job", "status", tmp_path / "job", *options, "--count", count)
        assert document.pop("schema") == 1
        assert veltra.job(tmp_path / "job", expected=expected, count=count).status() == document
    (tmp_path / "job/gone.vres").symlink_to("nowhere")
    with pytest.warns(UserWarning, match="nowhere|gone"):
        read = veltra.job([tmp_path / "job", tmp_path / "job/gone.vres"], expected=["A-1"])
    assert read.faults == [f"{tmp_path}/job/gone.vres: No such file or directory"]


def walk(file):
    """Asks for all there is of a file."""
    file.info(), file.findings, file.result, file.kind
    for section in file.sections:
        section.as_dict(), repr(section)
        for ask in (section.read, section.record, section.json, section.show):
            try:
                ask()
            except veltra.DamageError as error:
                assert error.file and error.code and error.offset is not None


def test_hostile_files(corpus, write):
    opened = 0
    for path in [*(corpus / "Container").iterdir(), *(corpus / "ContainerInspect").iterdir()]:
        try:
            with veltra.open(path) as file:
                walk(file)
            opened += 1
        except veltra.DamageError as error:
            assert error.code == "E02"
    assert opened > 20
    records = [path.read_bytes() for path in (corpus / "Record").iterdir() if path.stat().st_size > 0]
    with veltra.open(write("records.vres", *records)) as file:
        walk(file)
    veltra.doctor(corpus, depth="deep")
    for result in veltra.results(corpus):
        repr(result), result.as_dict(), result.time, result.headroom, result.length_relation


def test_errors(vectors, tmp_path):
    with pytest.raises(FileNotFoundError) as caught:
        veltra.open(tmp_path / "none.vres")
    assert isinstance(caught.value, veltra.MissingFileError) and isinstance(caught.value, veltra.Error)
    assert (caught.value.file, caught.value.code, caught.value.errno) == (f"{tmp_path}/none.vres", "ENOENT", 2)
    again = pickle.loads(pickle.dumps(caught.value))
    assert (str(again), again.file, again.errno, type(again)) == (str(caught.value), again.filename, 2, type(caught.value))
    for call in (veltra.results, veltra.frame, veltra.doctor, veltra.job):
        with pytest.raises(FileNotFoundError):
            call(tmp_path / "none.vres")
        with pytest.raises(TypeError):
            call(7)
        with pytest.raises(ValueError, match="zero byte"):
            call(["a\0b"])
    for call in (veltra.open, lambda path: veltra.results(path, recursive=False)):
        with pytest.raises(IsADirectoryError):
            call(tmp_path)
    with pytest.raises(veltra.DamageError) as damage:
        veltra.open(vectors / "README.md")
    assert (damage.value.code, damage.value.offset) == ("E02", 0)
    with veltra.open(vectors / "fibre.vres") as file:
        section, sections = file.sections[2], file.sections
        assert [each.number for each in sections[1:3]] == [1, 2] and sections[-1].number == len(sections) - 1
        for number in (99, -99):
            with pytest.raises(IndexError):
                sections[number]
    for call in (section.read, file.info, lambda: len(sections)):
        with pytest.raises(ValueError, match="closed"):
            call()


def test_memory_of_a_payload_goes_with_its_last_view(write):
    path = write("large.vres", bytes(8 << 20), compress=9)
    with veltra.open(path) as file:
        view = file.sections[2].read()
        part = view[4096:8192]
        del view
        held = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss
        for _ in range(64):
            file.sections[2].read()
    assert resource.getrusage(resource.RUSAGE_SELF).ru_maxrss - held < 64 << 10
    assert part.readonly and part.nbytes == 4096 and bytes(part) == bytes(4096)


@pytest.mark.parametrize("work", ["veltra.doctor(sys.argv[1])", "veltra.open(sys.argv[1] + '/fibre.vres').info()"])
def test_the_interpreter_ends_while_a_thread_reads(vectors, work):
    script = f"""if True:
        import sys, threading, time, veltra
        def read():
            while True: {work}
        threading.Thread(target=read, daemon=True).start()
        time.sleep(0.2)"""
    answer = subprocess.run([sys.executable, "-c", script, vectors], capture_output=True)
    assert (answer.returncode, answer.stderr) == (0, b"")


def test_threads(vectors):
    def answers(_):
        with veltra.open(vectors / "fibre.vres") as own:
            own.sections
        return [(each.show(), bytes(each.read())) for each in shared.sections], shared.info()

    with veltra.open(vectors / "fibre.vres") as shared, concurrent.futures.ThreadPoolExecutor(8) as pool:
        first, *others = pool.map(answers, range(64))
    assert all(other == first for other in others)
    # One that reads for long lets the others work.
    iterator = veltra.results(vectors, unsorted=True)
    assert len(list(iterator)) == len(list(veltra.results(vectors))) and list(iterator) == []


@pytest.mark.parametrize("ask", ["open", "results", "frame", "doctor", "recover", "job", "processes"])
def test_interrupt(tmp_path, ask):
    """A terabyte of zeros takes long to look through. Who starts the tests may have SIGINT ignored."""
    path = tmp_path / "zeros"
    with path.open("wb") as file:
        file.truncate(1 << 40)
    calls = {"results": lambda p: next(veltra.results(p)), "recover": lambda p: veltra.recover(p, tmp_path / "new"),
             "job": lambda p: veltra.job(p, expected="A-1"), "processes": lambda p: veltra.frame([p, p], processes=2)}
    before = signal.signal(signal.SIGINT, signal.default_int_handler)
    timer = threading.Timer(0.3, os.kill, (os.getpid(), signal.SIGINT))
    with pytest.raises(KeyboardInterrupt):
        timer.start()
        calls.get(ask, getattr(veltra, ask, None))(path)
    signal.signal(signal.SIGINT, before)
    assert sorted(tmp_path.iterdir()) == [path]


def test_names_of_files(write, tmp_path):
    """Whatever the bytes of a name: it comes back as one that opens the file, in any locale."""
    names = [b"line\nbreak.vres", b"not-utf8-\xff\xfe.vres", "größe.vres".encode(), b"-"]
    plain = write("plain.vres", id="A-1")
    folder = os.path.join(os.fsencode(tmp_path), b"names")
    os.mkdir(folder)
    for name in names:
        with open(os.path.join(folder, name), "wb") as file:
            file.write(plain.read_bytes())
    script = """if True:
        import os, sys, veltra
        found = list(veltra.results(sys.argv[1])) + list(veltra.results(["-"], recursive=False))
        for result in found:
            with veltra.open(result.file) as file:
                assert os.fsencode(file.name) == os.fsencode(result.file) and file.result == result
            try:
                file.info()
            except ValueError as error:
                assert "closed" in str(error) and str(error).startswith(os.path.dirname(result.file)), error
        frame = veltra.frame(sys.argv[1])
        assert sorted(map(os.fsencode, frame.file)) == sorted(os.fsencode(r.file) for r in found[:-1]), frame.file
        print(len(found), ascii(found[-1].file))"""
    for locale in ("C", "C.UTF-8", "POSIX"):
        answer = subprocess.run([sys.executable, "-c", script, folder], cwd=folder, capture_output=True, text=True,
                                env={**os.environ, "LC_ALL": locale})
        assert (answer.stdout, answer.stderr) == ("5 './-'\n", "")
