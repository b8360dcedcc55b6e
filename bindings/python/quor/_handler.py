"""The traces of a program that uses `logging` already."""
from __future__ import annotations

import logging

from ._points import DEVELOPER, ERROR, INFO, NO_ROOM, NOWHERE, VERBOSE, WARN, Point
from ._texts import encoded, shown, unformatted


def attributes_of(level: int) -> int:
    """DEBUG is for developers, and what is below DEBUG is verbose too."""
    if level >= logging.INFO:
        return INFO if level < logging.WARNING else WARN if level < logging.ERROR else ERROR
    return INFO | DEVELOPER if level >= logging.DEBUG else INFO | DEVELOPER | VERBOSE


class Handler(logging.Handler):
    """Traces what is logged: `logging.basicConfig(level=logging.DEBUG, handlers=[quor.Handler()])`.

    The logger "orders.db.pool" becomes the component "orders" with the category "db.pool", and the logger
    "asyncio" the component "asyncio" with the category "Log". With `component` all loggers are categories of
    that one. A record whose trace is off is not formatted.

    Errors   A record that cannot be formatted is traced as it is, with the reason, and is reported as every
             handler of `logging` does it. No Exception reaches the caller.
    Threads  Any, without waiting for each other: there is no lock around `emit`.
    """

    def __init__(self, component: str | None = None, level: int | str = logging.NOTSET) -> None:
        super().__init__(level)
        # Severity and names are columns of their own. Without a formatter basicConfig would set one with them.
        self.setFormatter(logging.Formatter())
        self._component = component
        self._points: dict[str, Point] = {}

    def createLock(self) -> None:
        self.lock = None

    def handle(self, record: logging.LogRecord) -> bool:
        passed = self.filter(record)
        if isinstance(passed, logging.LogRecord):  # of a filter that has replaced it
            record = passed
        if passed:
            self.emit(record)
        return bool(passed)

    def emit(self, record: logging.LogRecord) -> None:
        try:
            point = self._points.get(record.name) or self._new_point(record.name)
            attributes = attributes_of(record.levelno)
            if not point.is_on(attributes):
                return
            place = NOWHERE
            if point._has_location():
                place = encoded(shown(record.pathname)), record.lineno or 0
            text = self._text(record)
            if (point.component, point.category) == NO_ROOM:
                text = f"[{record.name}] {text}"
            point._write(attributes, place, text)
        except Exception:
            self.handleError(record)

    def handleError(self, record: logging.LogRecord) -> None:
        try:
            super().handleError(record)
        except Exception:  # it shows the arguments, which may fail again
            pass

    def _text(self, record: logging.LogRecord) -> str:
        try:
            return self.format(record)
        except Exception as error:
            self.handleError(record)
            return unformatted(record.msg, error)

    def _new_point(self, name: str) -> Point:
        if self._component is not None:
            point = Point(self._component, shown(name))
        else:
            component, _, category = shown(name).partition(".")
            point = Point(component, category or "Log")
        # All names for which there is no room are one point, and are not kept.
        if (point.component, point.category) != NO_ROOM:
            self._points[name] = point
        return point
