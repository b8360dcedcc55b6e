"""Blocks: "Begin: TEXT" and "End: TEXT", which the monitor shows as a branch with its duration."""
from __future__ import annotations

import functools
import inspect
import sys
from types import TracebackType
from typing import Any, Callable, TypeVar

from ._points import DEVELOPER, INFO, NOWHERE, Place, Point, place_of
from ._texts import encoded, formatted, shown

_Function = TypeVar("_Function", bound=Callable[..., Any])


class Block:
    """What `quor.block` makes. It is for one thread or task at a time."""

    __slots__ = ("_point", "_text", "_arguments", "_attributes", "_place", "_open")

    def __init__(self, point: Point, text: object, arguments: tuple[object, ...], attributes: int,
                 place: Place | None = None) -> None:
        self._point, self._text, self._arguments = point, text, arguments
        self._attributes, self._place = attributes, place
        self._open: Any = None  # what has begun and not ended, newest first, as nested pairs

    def __enter__(self) -> Block:
        point, begun = self._point, None
        if point.is_on(self._attributes):
            place = NOWHERE
            if point._has_location():
                place = self._place or place_of(sys._getframe(1))
            begun = place, formatted(self._text, self._arguments)
            point._write(self._attributes, place, "Begin: " + begun[1])
        self._open = self._open, begun
        return self

    def __exit__(self, kind: type[BaseException] | None, error: BaseException | None,
                 stack: TracebackType | None) -> None:
        self._open, begun = self._open
        if begun is None:
            return
        place, text = begun
        for_developers = INFO | DEVELOPER
        if kind is not None and self._point.is_on(for_developers):
            self._point._write(for_developers, place, f"left by {kind.__name__}: {shown(error)}")
        self._point._write(self._attributes, place, "End: " + text)

    def __call__(self, function: _Function) -> _Function:
        """As a decorator: each call is a block of its own. That of a generator ends with its last step."""
        if inspect.isasyncgenfunction(function):
            raise TypeError("quor.block decorates no asynchronous generator; write `with quor.block(...)` in it")
        code = getattr(inspect.unwrap(function), "__code__", None)
        place = (encoded(code.co_filename), code.co_firstlineno) if code else NOWHERE

        def block() -> Block:
            return Block(self._point, self._text, self._arguments, self._attributes, place)

        return functools.wraps(function)(_wrapped(function, block))  # type: ignore[return-value]


def _wrapped(function: Callable[..., Any], block: Callable[[], Block]) -> Callable[..., Any]:
    call: Callable[..., Any]
    if inspect.iscoroutinefunction(function):
        async def call(*arguments: Any, **named: Any) -> Any:
            with block():
                return await function(*arguments, **named)
    elif inspect.isgeneratorfunction(function):
        def call(*arguments: Any, **named: Any) -> Any:
            with block():
                return (yield from function(*arguments, **named))
    else:
        def call(*arguments: Any, **named: Any) -> Any:
            with block():
                return function(*arguments, **named)
    return call


def block(point: Point, text: object, *arguments: object, attributes: int = INFO) -> Block:
    """A block that is traced at its begin and its end:

        with quor.block(point, "request %s", number):
            ...

        @quor.block(point, "query")
        async def query(): ...

    If the point is off at the begin, the end is not traced either. An exception that leaves the block is
    traced for developers, before the end.
    """
    return Block(point, text, arguments, attributes)
