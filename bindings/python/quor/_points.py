"""Trace points.

Shape    A point is known by its component and category: the same names give the same Point. Its settings
         word is read where the library writes it, so a switch is in force with the next trace.
Errors   No trace raises an Exception. A text that cannot be formatted is traced as it is, with the reason.
Threads  Any. Two threads may make the same point at once: `dict.setdefault` lets one of them win. A lock
         would have to be safe in signal handlers and over a fork, and the rare double costs 100 bytes.
"""
from __future__ import annotations

import ctypes
import os
import sys
from types import FrameType
from typing import Final, Tuple

from . import _library
from ._library import UNREGISTERED, quor_trace
from ._texts import encoded, formatted, shown

INFO: Final = 0x01
WARN: Final = 0x02
ERROR: Final = 0x04
DEVELOPER: Final = 0x08
VERBOSE: Final = 0x10
_LOCATION: Final = 0x100

# The library has room for so many, and shows any further one under these names.
_MOST_POINTS: Final = 16383
NO_ROOM: Final = ("Quor", "(no room for more trace points)")

Place = Tuple["bytes | None", int]  # file and line, as the library takes them
NOWHERE: Final[Place] = (None, 0)

_points: dict[tuple[str, str], Point] = {}
_given_name: bytes | None = None
_is_named = False  # set when the library has the name, so that no other thread traces before


def application(name: str) -> None:
    """Names this program in the monitor. Without this call it has the name of its script."""
    global _given_name, _is_named
    _given_name = encoded(shown(name))
    _library.quor_application(_given_name)
    _is_named = True


def thread_name(name: str) -> None:
    """Names this thread in its traces, instead of its number."""
    if not _is_named:
        _name_by_default()
    _library.quor_thread_name(encoded(shown(name)))


def _name_by_default() -> None:
    global _is_named
    name = _name_of_script()
    if name and not name.startswith("-"):
        _library.quor_application(encoded(name))
        if _given_name is not None:  # by another thread, meanwhile
            _library.quor_application(_given_name)
    _is_named = True


def _name_of_script() -> str:
    """It is better than that of the interpreter. A program that embeds the interpreter has one of its own."""
    try:
        if not os.path.basename(os.readlink("/proc/self/exe")).startswith(("python", "pypy")):
            return ""
        name = os.path.splitext(os.path.basename(sys.argv[0]))[0]
        if name == "__main__":
            name = os.path.basename(os.path.dirname(os.path.abspath(sys.argv[0])))
        return name
    except (OSError, AttributeError, IndexError):  # no /proc, no sys.argv
        return ""


def place_of(frame: FrameType) -> Place:
    return encoded(frame.f_code.co_filename), frame.f_lineno or 0


def _place_at(depth: int) -> Place:
    try:
        return place_of(sys._getframe(depth + 1))
    except ValueError:  # beyond the outermost frame
        return NOWHERE


class Point:
    """A trace point: `Point("Net", "Connect").info("connected to %s", host)`."""

    __slots__ = ("component", "category", "_address", "_settings")
    component: str
    category: str

    def __new__(cls, component: str, category: str) -> Point:
        known = _points.get((component, category))
        if known is not None:
            return known
        if len(_points) >= _MOST_POINTS and (component, category) != NO_ROOM:
            return cls(*NO_ROOM)
        if not isinstance(component, str) or not isinstance(category, str):
            raise TypeError("a trace point has a component and a category, both of type str")
        point = super().__new__(cls)
        point.component, point.category = component, category
        point._make()
        return _points.setdefault((component, category), point)

    def _make(self) -> None:
        size = ctypes.sizeof(_library.PointMemory)
        names = [encoded(name) + b"\0" for name in (self.component, self.category)]
        self._address = _library.forever(size + len(names[0]) + len(names[1]))
        memory = _library.PointMemory.from_address(self._address)
        memory.settings = UNREGISTERED
        memory.component = self._address + size
        memory.category = self._address + size + len(names[0])
        ctypes.memmove(self._address + size, names[0] + names[1], len(names[0]) + len(names[1]))
        self._settings = ctypes.c_uint32.from_address(self._address)
        _library.quor_declare(self._address)  # before another thread can use it

    def __reduce__(self) -> tuple[type[Point], tuple[str, str]]:
        return Point, (self.component, self.category)

    def __repr__(self) -> str:
        return f"quor.Point({self.component!r}, {self.category!r})"

    def info(self, text: object, *arguments: object) -> None:
        if self._settings.value & INFO:
            self._trace(INFO, text, arguments, 2)

    def warn(self, text: object, *arguments: object) -> None:
        if self._settings.value & WARN:
            self._trace(WARN, text, arguments, 2)

    def error(self, text: object, *arguments: object) -> None:
        if self._settings.value & ERROR:
            self._trace(ERROR, text, arguments, 2)

    def trace(self, attributes: int, text: object, *arguments: object, stacklevel: int = 1) -> None:
        """Traces at INFO, WARN or ERROR, together with DEVELOPER, VERBOSE or both:
        `point.trace(quor.INFO | quor.DEVELOPER, "second try")`. A log function of your own gives
        `stacklevel=2`, so that the location is that of its caller."""
        if self._settings.value & attributes == attributes:
            self._trace(attributes, text, arguments, stacklevel + 1)

    def is_on(self, attributes: int = INFO) -> bool:
        """Whether a trace with these attributes passes now."""
        settings = self._settings.value
        if settings & attributes != attributes:
            return False
        return settings != UNREGISTERED or self._is_on_at_first(attributes)

    def _is_on_at_first(self, attributes: int) -> bool:
        if not _is_named:
            _name_by_default()
        return _library.quor_first_use(self._address, attributes) != 0

    def _has_location(self) -> bool:
        return self._settings.value & _LOCATION != 0

    def _trace(self, attributes: int, text: object, arguments: tuple[object, ...], depth: int) -> None:
        if self._settings.value == UNREGISTERED and not self._is_on_at_first(attributes):
            return
        place = _place_at(depth) if self._settings.value & _LOCATION else NOWHERE
        self._write(attributes, place, formatted(text, arguments))

    def _write(self, attributes: int, place: Place, text: str) -> None:
        if not _is_named:  # a library of the program has traced before
            _name_by_default()
        data = encoded(text)
        quor_trace(self._address, attributes, place[0], place[1], data, len(data))
