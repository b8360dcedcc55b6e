#!/usr/bin/env python3
"""Writes the rows of a run of the benchmarks into the page of their figures.

`table.py ROWS PAGE LOAD`: ROWS is what the benchmarks have printed, LOAD the load of the machine before them.
"""
import datetime
import os
import platform
import re
import subprocess
import sys
from pathlib import Path

ROW = re.compile(r"^(?P<what>\S.*?)\s+(?P<cost>[\d.]+) (?P<unit>% of core|\S+)\s+floor\s+(?P<floor>[\d.]+)\s+"
                 r"ratio\s+(?P<ratio>[\d.]+)\s+target <=\s+(?P<target>[\d.]+)\s+(?P<end>met|MISSED)$")
BEGIN, END = "<!-- figures: begin -->\n", "<!-- figures: end -->\n"
QUIET = 0.5  # load for each core: above it other programs have run beside


def machine(load):
    """What the figures depend on. It does not name the machine."""
    compiler = subprocess.run(["c++", "--version"], capture_output=True, text=True, check=True).stdout.splitlines()[0]
    cores = os.cpu_count()
    kernel = ".".join(platform.release().split(".")[:2])  # what follows names who built it
    loaded = "" if load <= QUIET * cores else " The machine was not quiet: ratios hold, costs may be too high."
    return (f"{datetime.date.today()}, {cores} cores ({platform.machine()}), Linux {kernel}, {compiler}. "
            f"The load before the run was {load:.1f}.{loaded}\n")


def table(rows):
    """The rows as a table. What else the benchmarks print belongs to the run and not to the page."""
    lines = ["| what is measured / its floor | cost | floor | ratio | target |", "|---|---|---|---|---|"]
    for row in rows.splitlines():
        found = ROW.match(row)
        if not found:
            continue
        missed = " (missed)" if found["end"] == "MISSED" else ""
        what = found["what"].replace("|", r"\|")
        lines.append(f"| {what} | {found['cost']} {found['unit']} | {found['floor']} | **{found['ratio']}** "
                     f"| {found['target']}{missed} |")
    if len(lines) == 2:
        raise ValueError("no row of a benchmark")
    return "\n".join(lines) + "\n"


def written(page, figures):
    if page.count(BEGIN) != 1 or page.count(END) != 1 or page.index(BEGIN) > page.index(END):
        raise ValueError("the page has no place for the figures")
    return page[:page.index(BEGIN) + len(BEGIN)] + figures + page[page.index(END):]


def main():
    rows, page, load = Path(sys.argv[1]), Path(sys.argv[2]), float(sys.argv[3])
    page.write_text(written(page.read_text(), machine(load) + "\n" + table(rows.read_text())))


if __name__ == "__main__":
    main()
