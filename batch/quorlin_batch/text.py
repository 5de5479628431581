"""Texts of names and outputs, made fit for a terminal, XML and JSON; files written in one step."""

import contextlib
import os

MAX_TEXT = 1000  # characters kept of a text
SHORT_ESCAPES = {"\n": "\\n", "\r": "\\r", "\t": "\\t"}


def escape(character: str) -> str:
    code = ord(character)
    if 0xDC80 <= code <= 0xDCFF:  # a byte that is no UTF-8, as surrogateescape keeps it
        return f"\\x{code - 0xDC00:02x}"
    if code < 0x80:
        return SHORT_ESCAPES.get(character, f"\\x{code:02x}")
    return f"\\u{code:04x}" if code < 0x10000 else f"\\U{code:08x}"


def printable(text: str) -> str:
    """The text, with escapes for control and invisible characters and for broken UTF-8."""
    if text.isprintable():
        return text
    return "".join(c if c.isprintable() else escape(c) for c in text)


def short(text: str) -> str:
    """As it is kept of what quorlin prints."""
    return printable(text[:MAX_TEXT].strip().replace("\n", " ")) + ("…" if len(text) > MAX_TEXT else "")


def plural(count: int, word: str) -> str:
    return f"{count:,} {word}" + ("" if count == 1 else "s")


def duration(seconds: float) -> str:
    """Seconds as a person says them: 4.2 s, 3 min 20 s, 2 h 5 min."""
    if seconds < 60:
        return f"{seconds:.1f} s".replace(".0 ", " ")
    minutes = int(seconds) // 60
    if minutes < 60:
        return f"{minutes} min {int(seconds) % 60} s"
    return f"{minutes // 60} h {minutes % 60} min"


def write_whole(path: str, content: bytes) -> None:
    """Writes beside the file and renames: nobody ever sees half of it."""
    beside = path + ".new"
    try:
        with open(beside, "wb") as file:
            file.write(content)
        os.replace(beside, path)
    except OSError as error:
        with contextlib.suppress(OSError):
            os.remove(beside)
        raise OSError(error.errno, error.strerror, path) from error
