"""Results of more files than one machine should read, as a Dask DataFrame.

    import dask.distributed, veltra.dask

    client = dask.distributed.Client("scheduler:8786")
    results = veltra.dask.frame("/archive/2026/*", npartitions=400)
    results.groupby("status").headroom.min().compute()

The files must have the same paths on every worker, and each worker needs this package. Nothing but the names of the
files is read before an answer is asked for.
"""

from __future__ import annotations

import glob
import os
from collections.abc import Iterable
from typing import cast

import pandas
from dask.dataframe.core import DataFrame
from dask.dataframe.io.io import from_delayed
from dask.delayed import delayed

from . import Path, Paths, _count, _frames, _missing, _run, _veltra

__all__ = ["frame"]


def _matching(pattern: str | bytes) -> list[Path]:
    """In order. Folders that `**` finds are left out: it finds the files in them as well."""
    is_deep = "**" in os.fsdecode(pattern)
    found: list[Path] = sorted(glob.glob(pattern, recursive=True))  # type: ignore[type-var,assignment]
    return [path for path in found if not (is_deep and os.path.isdir(path))]


def _expanded(paths: Paths) -> list[Path] | Path:
    """Paths with those that match in place of patterns; a path that is there is no pattern."""
    alone = isinstance(paths, (str, bytes, os.PathLike))
    if alone and not glob.has_magic(os.fspath(paths)):  # type: ignore[arg-type]
        return paths  # type: ignore[return-value]
    listed: Iterable[Path] = [paths] if alone else paths  # type: ignore[list-item,assignment]
    expanded: list[Path] = []
    for path in listed:
        name = os.fspath(path)
        if os.path.lexists(name) or not glob.has_magic(name):
            expanded.append(name)
        else:
            expanded.extend(_matching(name))
    if alone and not expanded:
        raise _missing(paths)  # type: ignore[arg-type]
    return expanded


def _extensions(part: _veltra.Run) -> list[bytes]:
    return part.extensions()


def _all_of(extensions: list[list[bytes]]) -> list[bytes]:
    return sorted({extension for some in extensions for extension in some})


def _partition(part: _veltra.Run, extensions: list[bytes], threads: int) -> pandas.DataFrame:
    return _frames.frame_of(part.with_extensions(extensions).read(True, threads))


def frame(
    paths_or_globs: Paths, npartitions: int | None = None, *, recursive: bool = True, threads: int = 1
) -> DataFrame:
    """The results of files, folders and patterns as a Dask DataFrame: the rows and columns of veltra.frame(), in the order
    of the files.

    A partition is a slice of the files, so a partition that is lost with its worker is read once more. A file that is
    damaged, or has gone when its turn comes, is a row that says so.

    In a pattern `**` stands for folders of any depth.

    npartitions  how many; None: one for each 2,000 files
    threads      that read a partition; workers have threads of their own
    """
    run = _run(_expanded(paths_or_globs), recursive)
    threads = _count("threads", threads, 0)
    npartitions = -(-len(run) // 2000) if npartitions is None else _count("npartitions", npartitions, 1, 1 << 31)
    npartitions = max(1, min(npartitions, len(run)))
    # Whether a file that is no container may be a lost result is told by the other files, of all partitions.
    parts = [delayed(part) for part in run.parts(npartitions)]
    extensions = delayed(_all_of)([delayed(_extensions)(part) for part in parts])
    frames = [delayed(_partition)(part, extensions, threads) for part in parts]
    return cast(DataFrame, from_delayed(frames, meta=_frames.empty_frame(), verify_meta=False))
