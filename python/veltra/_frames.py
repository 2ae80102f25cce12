"""Rows of results as pandas has them."""

from __future__ import annotations

import concurrent.futures
import os
import signal

import numpy
import pandas

from . import _veltra

_CATEGORIES = {
    "type": pandas.CategoricalDtype(_veltra.TYPES),
    "status": pandas.CategoricalDtype(_veltra.VERDICTS, ordered=True),
    "lengthRelation": pandas.CategoricalDtype(_veltra.RELATIONS),
    "headroomRelation": pandas.CategoricalDtype(_veltra.RELATIONS),
}
_TEXTS = ("file", "id", "error")


def frame_of(rows: _veltra.Rows) -> pandas.DataFrame:
    """The rows with the type that each column has, whatever is in it."""
    columns = rows.columns()
    lost = columns.pop("lost")
    series: dict[str, object] = {}
    for name, values in columns.items():
        if name in _TEXTS:
            series[name] = pandas.array(values, dtype="string")
        elif name in _CATEGORIES:
            series[name] = pandas.Categorical.from_codes(values, dtype=_CATEGORIES[name])
        elif name == "time":
            series[name] = pandas.DatetimeIndex(values.view("datetime64[ns]"), tz="UTC")
        elif name.startswith("num"):
            series[name] = pandas.arrays.IntegerArray(values.astype(numpy.int64), lost.copy())
        else:
            series[name] = values
    return pandas.DataFrame(series, copy=False)


def empty_frame() -> pandas.DataFrame:
    return frame_of(_veltra.Rows())


def _ignore_interrupts() -> None:
    """Ctrl-C reaches every process; the one that waits for the others ends them."""
    signal.signal(signal.SIGINT, signal.SIG_IGN)


def _read_part(part: _veltra.Run, threads: int) -> _veltra.Rows:
    return part.read(True, threads)


def read_in_processes(run: _veltra.Run, unsorted: bool, processes: int, threads: int) -> _veltra.Rows:
    """The rows that run.read() gives, read by several processes."""
    known = run.with_extensions(run.extensions())
    most = max(64, min(4096, -(-len(run) // processes)))  # small enough that Ctrl-C does not wait long
    threads = threads or max(1, (os.cpu_count() or 1) // processes)
    parts = known.parts(max(1, -(-len(run) // most)))
    rows = _veltra.Rows()
    with concurrent.futures.ProcessPoolExecutor(processes, initializer=_ignore_interrupts) as pool:
        waiting = [pool.submit(_read_part, part, threads) for part in parts]
        try:
            for part in waiting:
                rows.extend(part.result())
        except BaseException:
            pool.shutdown(wait=False, cancel_futures=True)
            raise
    if not unsorted:
        rows.sort()
    return rows
