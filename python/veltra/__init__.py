"""Test results of handheld cabling testers: reading, checking, saving and writing their files.

    import veltra

    for result in veltra.results("job"):            # in the order of IDs, damaged files too
        print(result.id, result.verdict, result.headroom)

    frame = veltra.frame("job")                     # the same as a pandas DataFrame

    with veltra.open("otdr-pass.vres") as file:     # sections, records as dicts, payloads without a copy
        print(file.sections[1].record())
        raw = file.sections[2].read()

    with veltra.create("new.vres") as out:          # the file is there when the block ends well
        out.summary(id="A-01", verdict="Pass", length="42.5")
        out.add("OTDR_END_1_RAW", raw, compress=6)

What the command `veltra -f json` says of a file is what the functions here say of it. Paths may be str, bytes or
os.PathLike. Many files are read by several threads at a time, without the lock of the interpreter; Ctrl-C ends it. A
fault of a file raises an Error, which knows file, offset and code, and of many files is a row that says so. Objects may
be used by several threads, an iterator by one at a time.
"""

from __future__ import annotations

import builtins
import contextlib
import datetime
import decimal
import errno
import operator
import os
import warnings
from collections.abc import Iterable, Iterator, Sequence
from types import TracebackType
from typing import TYPE_CHECKING, Any, Literal, Union

from . import _veltra
from ._errors import (
    DamageError,
    DeniedFileError,
    DirectoryFileError,
    Error,
    ExistingFileError,
    FileError,
    MissingFileError,
    of_system,
)
from ._veltra import File, Job, Result, Section, Sections, __version__

if TYPE_CHECKING:
    import pandas

__all__ = [
    "DamageError",
    "DeniedFileError",
    "DirectoryFileError",
    "Error",
    "ExistingFileError",
    "File",
    "FileError",
    "Job",
    "MissingFileError",
    "Result",
    "Section",
    "Sections",
    "Writer",
    "create",
    "doctor",
    "frame",
    "job",
    "open",
    "recover",
    "results",
]

Path = Union[str, bytes, "os.PathLike[str]", "os.PathLike[bytes]"]
Paths = Union[Path, Iterable[Path]]
Number = Union[str, int, float, decimal.Decimal]

for _class in (DamageError, DeniedFileError, DirectoryFileError, Error, ExistingFileError, FileError, MissingFileError):
    _class.__module__ = "veltra"


def _of_reason(path: Path, reason: int) -> FileError:
    name = os.fsdecode(path)
    return of_system(f"{name}: {os.strerror(reason)}", name, reason)


def _missing(path: Path) -> FileError:
    return _of_reason(path, errno.ENOENT)


def _run(paths: Paths, recursive: bool) -> _veltra.Run:
    """Lists files. One path alone that is not there, or a folder that is not to be looked into, is an error."""
    alone = isinstance(paths, (str, bytes, os.PathLike))
    listed: list[Path] = [paths] if alone else list(paths)  # type: ignore[arg-type,list-item]
    for path in listed:
        if alone and not os.path.lexists(path):
            raise _missing(path)
        if not recursive and os.path.isdir(path):
            raise _of_reason(path, errno.EISDIR)
    return _veltra.Run(listed, recursive)


def open(path: Path) -> File:
    """Opens a container. Its sections are looked at when they are asked for.

    Raises FileError if it cannot be opened, DamageError with the code "E02" if it is no container. A damaged file opens:
    `damaged` and `findings` say what is wrong with it.
    """
    return File(path)


def results(paths: Paths, *, recursive: bool = True, unsorted: bool = False, threads: int = 0) -> Iterator[Result]:
    """Gives the result of each file of paths, which are files and folders.

    The order is that of `veltra summary`: by ID, numbers in it counted, then by time. The results are then read with the
    first that is asked for, and what is held of each is small. Unsorted, they come in the order of the files, read a few
    at a time. Files without a result that can be read come last, or unsorted in their places: damaged ones, and named
    ones that cannot be read or are no containers. Files in folders that are no containers, and intact ones without a
    result, are left out.

    threads  that read; 0: one for each core

    One path alone that does not exist raises MissingFileError.
    """
    return _run(paths, recursive).results(unsorted, _count("threads", threads, 0))


def frame(
    paths: Paths, *, recursive: bool = True, unsorted: bool = False, processes: int = 1, threads: int = 0
) -> pandas.DataFrame:
    """The results of files and folders as a pandas DataFrame, a row each; which files, in which order: see results().

    The columns are those of `veltra summary -f csv`, with `damaged` and `error`:

    file, id, error           string; without a result NA, without an error NA
    type, status, ...Relation category; status is ordered, the worse verdict is the higher one
    length, headroom          float64, in m and dB; NA where there is no finite number: the relation beside it says why
    time                      datetime64[ns, UTC]; NA where the result says none, or none between 1678 and 2262
    num...Tests               Int64, NA without a result
    damaged                   bool: the file is damaged, or could not be read to its end

    processes  that read parts of the files; more than one pays only where making the rows takes longer than reading
    threads    of each process; 0: one for each core, shared by the processes
    """
    from . import _frames

    run = _run(paths, recursive)
    threads, processes = _count("threads", threads, 0), _count("processes", processes, 1)
    if processes == 1:
        return _frames.frame_of(run.read(unsorted, threads))
    return _frames.frame_of(_frames.read_in_processes(run, unsorted, processes, threads))


def doctor(
    paths: Paths, *, recursive: bool = True, depth: Literal["quick", "ordinary", "deep"] = "ordinary"
) -> list[dict[str, Any]]:
    """What is wrong with files, a dict for each: what `veltra doctor -f json` says under "files".

    Each has "file", "damaged", "findings" and "findingsLeftOut". A file that could not be read, or was named and is no
    container, has "file" and "error" alone.

    depth  "quick": headers only; "ordinary": CRCs, and the summary is decoded; "deep": all is inflated and decoded
    """
    return _veltra.doctor(_run(paths, recursive), depth)


def recover(path: Path, output: Path, *, force: bool = False) -> dict[str, Any]:
    """Saves every intact section of a damaged file to another: what `veltra recover -f json` says.

    "kept" lists the sections, "lost" the stretches of bytes, "lostSections" what was in them. The output is replaced
    whole or not at all, and an existing one only with force; the input never.

    Raises DamageError if there is no intact section.
    """
    return _veltra.recover(path, output, force)


def job(
    paths: Paths,
    *,
    description: Path | None = None,
    expected: Sequence[str] = (),
    count: Literal["latest", "all"] = "latest",
) -> Job:
    """Reads a job, a folder or files, and what is expected of it: `status()` says whether it is finished.

    description  of the job; None: the job.json of the folder, if there is one
    expected     more IDs, "FIRST..LAST" or single ones
    count        "latest": a later result stands for an earlier one of the same ID and tests; "all": all count

    Warns if something could not be read: `faults` lists it. Raises ValueError if no IDs are expected.
    """
    if isinstance(expected, str):
        expected = [expected]
    if isinstance(paths, (str, bytes, os.PathLike)) and not os.path.lexists(paths):
        raise _missing(paths)
    read = Job(paths, description, list(expected), count)
    if read.faults:
        warnings.warn(f"the status may lack results: {read.faults[0]}, {len(read.faults)} in all", stacklevel=2)
    return read


def create(path: Path, *, force: bool = False) -> Writer:
    """Begins a new result file, for a `with` statement: the file has its name when the block ends without an exception,
    and until then, and after an exception, what was at the path is as it was.

    force  replace an existing file; otherwise it raises ExistingFileError
    """
    return Writer(path, force)


class Writer(contextlib.AbstractContextManager["Writer"]):
    """A result file that is being written, as create() gives it: first its summary(), then sections by add()."""

    def __init__(self, path: Path, force: bool) -> None:
        self._file = _veltra.Writer(path, force)

    @property
    def name(self) -> str:
        """The path of the file."""
        return self._file.name

    @property
    def closed(self) -> bool:
        """Whether it was saved or given up."""
        return self._file.closed

    def summary(
        self,
        *,
        id: str = "",
        type: str = "NOT_SET",
        verdict: str = "Not set",
        time: datetime.datetime | str | int = 0,
        length: Number = "N/A",
        headroom: Number = "N/A",
        test_flags: Sequence[int] = (),
        num_pass_tests: int = 0,
        num_pass_star_tests: int = 0,
        num_fail_tests: int = 0,
    ) -> None:
        """Writes the summary of the result. Texts are those that Result has.

        time              a datetime with a time zone, text such as "2024-01-31T09:15:00Z", or seconds since 1970
        length, headroom  in m and dB, with up to 4 decimals: a number, or text such as "12.50", "> 12.5" or "---"
        test_flags        powers of two, one for each test that is contained
        num_...           -128 to 127

        Raises ValueError for what the file cannot hold exactly.
        """
        if isinstance(time, datetime.datetime):
            if time.tzinfo is None:
                raise ValueError("time: expected a datetime with a time zone, found one without")
            since = time - datetime.datetime(1970, 1, 1, tzinfo=datetime.timezone.utc)
            if since.microseconds or getattr(time, "nanosecond", 0):  # those of pandas have them
                raise ValueError(f"time: expected whole seconds, found {time}")
            time = since.days * 86400 + since.seconds
        members: dict[str, object] = {
            "resultName": id,
            "resultType": type,
            "status": verdict,
            "timeStamp": time,
            "length": str(length),
            "headroom": str(headroom),
            "testFlags": list(test_flags),
            "numPassTests": num_pass_tests,
            "numPassStarTests": num_pass_star_tests,
            "numFailTests": num_fail_tests,
        }
        self._file.summary(members)

    def add(self, type: int | str, data: Any, *, version: int = 0, compress: int | None = None) -> None:
        """Appends a section.

        type      its number, 2 to 65535, or the name of a known one
        data      its payload: bytes, or what lends its bytes; 1 to 2147483647 of them, 8388608 if compressed
        version   of its content
        compress  zlib level 0 to 9; None: the payload is stored as it is
        """
        self._file.add(type, data, version, compress)

    def close(self) -> None:
        """Saves the file; a `with` statement does."""
        if not self.closed:
            self._file.commit()

    def discard(self) -> None:
        """Gives the file up."""
        self._file.discard()

    def __enter__(self) -> Writer:
        return self

    def __exit__(
        self, kind: builtins.type[BaseException] | None, error: BaseException | None, trace: TracebackType | None
    ) -> None:
        if kind is not None:
            return self.discard()
        try:
            self.close()
        finally:
            self.discard()

    def __repr__(self) -> str:
        return f"<veltra.Writer {self.name!r}{', closed' if self.closed else ''}>"


def _count(name: str, value: int, least: int, most: int = 1024) -> int:
    if not hasattr(value, "__index__") or isinstance(value, bool):
        raise TypeError(f"{name}: expected an int, found {value!r}")
    count = operator.index(value)
    if not least <= count <= most:
        raise ValueError(f"{name}: expected {least} to {most}, found {count}")
    return count
