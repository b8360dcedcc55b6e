#!/usr/bin/env python3
"""The cost of the Python package: a trace point that is off beside a disabled call of logging, one that is on
and the handler beside logging to /dev/null.

The ring is large enough for all traces, and nothing takes them out meanwhile.
"""
import logging
import os
import statistics
import tempfile
import time

FOLDER = tempfile.TemporaryDirectory()
os.environ.update(QUOR_AUTOSTART="0", QUOR_SOCKET=f"{FOLDER.name}/none.sock", QUOR_RING_MIB="512")
import quor  # noqa: E402

TURNS, OFF_CALLS, ON_CALLS = 31, 20000, 2000


def seconds(work, calls):
    start = time.perf_counter()
    for number in range(calls):
        work("request %d", number)
    return time.perf_counter() - start


def row(what, target, work, floor_work, calls):
    """As bench/ratio.h has it: neighbouring runs are comparable."""
    pairs = [(seconds(work, calls), seconds(floor_work, calls)) for _ in range(TURNS + 1)][1:]
    cost, floor = (statistics.median(values) * 1e9 / calls for values in zip(*pairs))
    ratio = statistics.median(one / other for one, other in pairs)
    print(f"{what:<46} {cost:10.2f} {'ns':<9} floor {floor:10.2f}   ratio {ratio:6.2f}   "
          f"target <= {target:5.2f}  {'met' if ratio <= target else 'MISSED'}", flush=True)


def logger(name, handler):
    made = logging.getLogger(name)
    made.setLevel(logging.DEBUG)
    made.propagate = False
    made.addHandler(handler)
    return made


def main():
    point = quor.Point("Bench", "Point")
    disabled = logging.getLogger("disabled")
    disabled.setLevel(logging.WARNING)
    off = quor.INFO | quor.DEVELOPER
    traced = logger("traced", quor.Handler())
    with open(os.devnull, "w") as nowhere:
        written = logger("written", logging.StreamHandler(nowhere))
        row("python: point off / disabled log.debug", 1.5,
            lambda text, number: point.trace(off, text, number), disabled.debug, OFF_CALLS)
        row("python: point on / log.info to /dev/null", 0.5, point.info, written.info, ON_CALLS)
        row("python: handler on / log.info to /dev/null", 1.2, traced.info, written.info, ON_CALLS)
        row("python: handler off / log.info to /dev/null", 0.9, traced.debug, written.info, ON_CALLS)
    if quor.counts().lost:
        print(f"{quor.counts().lost} traces were lost, so the rows are wrong: MISSED")


main()
