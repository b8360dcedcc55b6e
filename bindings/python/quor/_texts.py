"""Texts for the library: formatted as `logging` does it, and as bytes. Nothing here raises an Exception."""
from __future__ import annotations

from collections.abc import Mapping

# A record takes 65,535 bytes, and the library cuts between two characters. What is longer in any case need
# not be encoded.
_LONGEST = 65536


def encoded(text: str) -> bytes:
    """UTF-8 without NULs, which end a text for its readers. Bytes that Python keeps in file names as surrogates
    are again the same bytes."""
    if len(text) > _LONGEST:
        text = text[:_LONGEST]
    if "\0" in text:
        text = text.replace("\0", "\\x00")
    try:
        return text.encode()
    except UnicodeEncodeError:
        try:
            return text.encode(errors="surrogateescape")
        except UnicodeEncodeError:
            return text.encode(errors="backslashreplace")


def shown(value: object) -> str:
    if type(value) is str:
        return value
    try:
        return str(value)
    except Exception as error:
        return f"({type(value).__name__} that cannot be shown: {_described(error)})"


def formatted(text: object, arguments: tuple[object, ...]) -> str:
    """text % arguments; a single mapping gives the values of %(name)s."""
    if not arguments:
        return shown(text)
    try:
        if len(arguments) == 1 and isinstance(arguments[0], Mapping) and arguments[0]:
            return str(text) % arguments[0]
        return str(text) % arguments
    except Exception as error:
        return unformatted(text, error)


def unformatted(text: object, error: Exception) -> str:
    """What is traced in the place of a text that cannot be formatted."""
    return f"{shown(text)} (cannot be formatted: {_described(error)})"


def _described(error: Exception) -> str:
    try:
        return f"{type(error).__name__}: {error}"
    except Exception:
        return type(error).__name__
