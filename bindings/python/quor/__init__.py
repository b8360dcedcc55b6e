"""Quor: tracing for running applications.

    import quor

    quor.application("orders")
    connect = quor.Point("Net", "Connect")
    connect.info("connected to %s in %d ms", host, ms)
    with quor.block(connect, "request %s", number):    # "Begin: request 7" ... "End: request 7"
        ...
    logging.basicConfig(level=logging.DEBUG, handlers=[quor.Handler()])

A point that is off formats nothing. One that is on writes into memory that the service shares, so that a
killed program loses nothing. Points are switched while the program runs, with `trc set` or in a window.
Every function may be called from any thread, and after a fork.
"""
from __future__ import annotations

from typing import NamedTuple

from . import _library
from ._blocks import Block, block
from ._handler import Handler
from ._points import DEVELOPER, ERROR, INFO, VERBOSE, WARN, Point, application, thread_name

__all__ = ["DEVELOPER", "ERROR", "INFO", "VERBOSE", "WARN", "Block", "Counts", "Handler", "Point",
           "application", "block", "counts", "flush", "thread_name"]


class Counts(NamedTuple):
    """Of this process: traced = lost + delivered (now or later)."""
    traced: int
    lost: int


def counts() -> Counts:
    memory = _library.CountsMemory()
    _library.quor_get_counts(memory)
    return Counts(memory.traced, memory.lost)


def flush(seconds: float) -> bool:
    """Waits until all traces have left the process; False if they have not after that time, which may be
    `math.inf`. Delivery to a running service does not need it."""
    milliseconds = min(max(0.0, seconds * 1000), 0xFFFFFFFF)  # the order takes what is no number as 0
    return _library.quor_flush(int(milliseconds)) != 0
