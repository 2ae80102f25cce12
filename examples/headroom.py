#!/usr/bin/env python3
"""headroom.py FOLDER PICTURE.png TABLE.csv

Reads the results of a job, plots their headroom against their length, and writes them as a table. A link whose file is
damaged or whose headroom is no number is no point of the plot; the last line says how many there are.
"""

from __future__ import annotations

import sys

import matplotlib

matplotlib.use("Agg")  # a picture, and no window
import matplotlib.pyplot
import veltra

COLORS = {"COPPER": "tab:blue", "FIBER": "tab:orange"}


def main(folder: str, picture: str, table: str) -> None:
    frame = veltra.frame(folder)
    points = frame[~frame.damaged].dropna(subset=["length", "headroom"])
    figure, axes = matplotlib.pyplot.subplots(figsize=(8, 5))
    for medium, results in points.groupby("type", observed=True):
        failed = results.status >= "Fail star"
        for marker, some in (("o", results[~failed]), ("x", results[failed])):
            axes.scatter(some.length, some.headroom, marker=marker, color=COLORS.get(str(medium), "tab:gray"))
        axes.scatter([], [], color=COLORS.get(str(medium), "tab:gray"), label=str(medium))
    axes.scatter([], [], marker="x", color="black", label="failed")
    axes.axhline(0, color="black", linewidth=0.8)
    axes.set(xlabel="length, m", ylabel="headroom, dB", title=f"{len(points)} results")
    axes.legend()
    figure.savefig(picture)
    frame.to_csv(table, index=False, errors="surrogateescape")  # names of files may be no UTF-8
    print(f"{len(points)} of {len(frame)} results in {picture}, all in {table}")


if __name__ == "__main__":
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    main(*sys.argv[1:])
