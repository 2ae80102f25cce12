#!/usr/bin/env python3
"""fleet.py [FILES] [FOLDER]

How many result files a second are read: by veltra.frame(), and by veltra.dask.frame() with one and with two worker
processes on this machine, to the end of a question that needs every row. The files, 50,000 of them, are made in a folder
in memory and removed at the end. Each figure is the best of three.
"""

from __future__ import annotations

import pathlib
import shutil
import sys
import tempfile
import time
from collections.abc import Callable
from typing import Any

import dask.distributed
import veltra
import veltra.dask

# Without types of their own.
Client: Any = dask.distributed.Client
LocalCluster: Any = dask.distributed.LocalCluster

TRACE = bytes(range(256)) * 16


def make(folder: pathlib.Path, count: int) -> None:
    for number in range(count):
        with veltra.create(folder / f"{number:06}.vres") as out:
            out.summary(id=f"A-{number:06}", verdict="Pass", time=1700000000 + number, length="42.5", headroom="6.12")
            out.add("OTDR_END_1_RAW", TRACE, version=1)


def tell(name: str, count: int, ask: Callable[[], Any]) -> None:
    best = 0.0
    for _ in range(3):
        begun = time.perf_counter()
        assert ask() == count
        best = max(best, count / (time.perf_counter() - begun))
    print(f"{name:42} {best:9,.0f} files/s")


def main(count: int, parent: str) -> None:
    folder = pathlib.Path(tempfile.mkdtemp(prefix="veltra-fleet-", dir=parent))
    try:
        make(folder, count)
        for threads, words in ((1, "one thread"), (0, "a thread for each core")):
            tell(f"veltra.frame, {words}", count, lambda: int(veltra.frame(folder, threads=threads).id.count()))
        tell("veltra.frame, two processes", count, lambda: int(veltra.frame(folder, processes=2).id.count()))
        for workers in (1, 2):
            with LocalCluster(
                n_workers=workers, threads_per_worker=1, processes=True, dashboard_address=None, silence_logs=50
            ) as cluster, Client(cluster) as client:
                client.run(__import__, "veltra.dask")  # with pandas, once for each worker
                tell(f"veltra.dask.frame, workers: {workers}", count,
                     lambda: int(veltra.dask.frame(folder, npartitions=32).id.count().compute()))
    finally:
        shutil.rmtree(folder)


if __name__ == "__main__":
    main(int(sys.argv[1]) if len(sys.argv) > 1 else 50000, sys.argv[2] if len(sys.argv) > 2 else "/dev/shm")
