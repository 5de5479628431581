"""Folds what quorlin printed: each text once, with its count. Reads outputs of any size by line."""

import os
import re
from collections import Counter
from collections.abc import Iterator
from dataclasses import dataclass, field
from typing import BinaryIO

from .text import printable

MAX_LINE = 10000  # bytes read of a line: more than two of the longest paths
MAX_TEXT = 1000  # characters kept of a text
MAX_TEXTS = 500  # different texts kept of an asset
MAX_NOTES = 100  # with that many texts no further note is kept: they leave room for findings
MAX_ALIKE = 50  # of these, texts that differ in numbers only
VERDICT = "validation result: "
SEPARATOR = "-" * 48
VERIFIED = " has been verified."
UNREADABLE = "ERROR: Invalid segment path: "
# The disk's fault, not that of the content.
UNWRITTEN = ("ERROR: Failed to write elementary stream path: ",
             "ERROR: Failed to create elementary stream path: ", "[SV]   : Failed to fwrite ",
             "[SV]   : Failed to write ")
UNWRITTEN_REASON = ("cannot be written", "could not be written",
                    "the track's file cannot be opened")
# Second lines of findings that have two.
CONTINUATIONS = ("There is an additional independent stream", "Num of Channels Field", " (audio: ")
LEVEL = re.compile(r"\s*(?:\d{3} - )?(?:\[SV\]\s*: )?(FATAL |)(ERROR|FAILURE|WARNING):",
                   re.IGNORECASE)
PACKED_AUDIO_TIME = re.compile(r" \(pts:-?\d+\)\Z")
# The number of a rule is none that differs, nor are the digits of words such as ec3.
NUMBER = re.compile(r"(?<![A-Za-z\d-])(?!^\d{3} - )\d+")

# Reasons on standard error: "quorlin: PATH: REASON". Any of them but these says that something was
# not validated.
OUT_OF_SCOPE = (
    "a rendition that is not of TYPE=AUDIO: the playlist is not validated",
    "an I-frame playlist: it is not validated",
    "an earlier variant has the same URI: validated once, with that variant's CODECS",
    ": not followed",
)
EMPTY_PLAYLIST = (
    "no segment could be read",
    "the playlist names no segment",
    "a master playlist where a media playlist is expected",
)
SKIPPED_SEGMENT = (
    "nothing is checked",
    "nothing is validated",
    "the segment is not read",
    "the segment's container is not recognised from its first 8 bytes",
)


@dataclass
class Output:
    """What the two outputs of a run say."""
    verdict: str | None = None  # PASSED or FAILED, when the last line says so
    verified: int = 0  # playlists walked to their end
    skipped_segments: int = 0  # that could not be opened, or of which nothing was checked
    empty_playlists: set[str] = field(default_factory=set)  # of which no segment was read
    unwritten: bool = False  # an elementary stream could not be written
    incomplete: bool = False  # something that should have been validated was not
    texts: dict[tuple[str, str], int] = field(default_factory=dict)  # (level, text) to count
    # The first path, of texts that leave it out.
    places: dict[tuple[str, str], str] = field(default_factory=dict)
    alike: Counter[str] = field(default_factory=Counter)
    more: int = 0  # lines with yet other texts

    def add(self, level: str, text: str, place: str | None = None) -> None:
        if len(text) > MAX_TEXT:
            text = text[:MAX_TEXT] + "…"
        key = (level, text)
        if key not in self.texts:
            form = NUMBER.sub("N", text)
            room = MAX_NOTES if level == "note" else MAX_TEXTS
            if len(self.texts) >= room or self.alike[form] >= MAX_ALIKE:
                self.more += level != "note"
                return
            self.alike[form] += 1
        self.texts[key] = self.texts.get(key, 0) + 1
        if place is not None:
            self.places.setdefault(key, place)

    def findings(self) -> list[dict]:
        """As they are stored, notes last: level, count, text and, for reasons, the first place."""
        stored = []
        notes_last = sorted(self.texts.items(), key=lambda item: item[0][0] == "note")
        for (level, text), count in notes_last:
            stored.append({"level": level, "count": count, "text": text})
            if (level, text) in self.places:
                stored[-1]["place"] = self.places[level, text]
        return stored

    def first(self) -> str | None:
        """The first text that is more than a note."""
        return next((text for level, text in self.texts if level != "note"), None)


def read_lines(path: str, asset: str) -> Iterator[str]:
    """Lines made printable, cut when they are over-long. No line ends within the asset's path."""
    name = os.fsencode(asset)
    line_breaks = tuple(name[:found.end()] for found in re.finditer(b"\n", name))
    with open(path, "rb") as file:
        while line := read_line(file):
            for _ in line_breaks:
                line += read_line(file) if line.endswith(line_breaks) else b""
            yield printable(line.removesuffix(b"\n").decode("utf-8", "surrogateescape"))


def read_line(file: BinaryIO) -> bytes:
    line = rest = file.readline(MAX_LINE)
    while len(rest) >= MAX_LINE and not rest.endswith(b"\n"):
        rest = file.readline(1 << 16)
    return line


def level_of(line: str) -> str:
    """error, warning or note. Of fragmented MP4, what does not say what it is, is an error."""
    if found := LEVEL.match(line):
        return "warning" if found[2].upper() == "WARNING" else "error"
    return "error" if line.startswith("[SV]") else "note"


def read_stdout(path: str, asset: str, output: Output) -> None:
    """Findings, and the verdict: the last line. What only frames the findings is left out."""
    previous = last = ""
    finding: tuple[str, str] | None = None  # waits for its second line
    for line in read_lines(path, asset):
        last = line
        if finding and line.startswith(CONTINUATIONS):
            line = finding[1].rstrip() + " " + line.strip()
        elif finding:
            output.add(*finding)
        finding = None
        if line.startswith(UNREADABLE):
            output.skipped_segments += 1
            output.incomplete = True
        elif line.startswith(UNWRITTEN):
            output.unwritten = True
        elif line.endswith(VERIFIED) and not line.startswith("ERROR"):
            output.verified += 1
        if not is_frame(line, previous):
            finding = (level_of(line), line)
        previous = line
    if last.startswith(VERDICT) and last.removeprefix(VERDICT) in ("PASSED", "FAILED"):
        output.verdict = last.removeprefix(VERDICT)
        finding = None
    if finding:
        output.add(*finding)


def is_frame(line: str, previous: str) -> bool:
    """Names of playlists and times of segments: no findings, and as many as there are segments."""
    if not line.strip() or line in (SEPARATOR, "#EXT-X-DISCONTINUITY"):
        return True
    if previous.endswith(SEPARATOR) and line.endswith(":"):
        return True
    is_verified = line.endswith(VERIFIED) and level_of(line) == "note"
    return is_verified or (line.startswith("  ") and bool(PACKED_AUDIO_TIME.search(line)))


def read_stderr(path: str, asset: str, output: Output) -> None:
    """Reasons are folded without their path: thousands of segments are skipped for one reason."""
    folder = printable(os.path.dirname(asset)) + "/"
    for line in read_lines(path, asset):
        if line.startswith("quorlin: ") and ": " in line.removeprefix("quorlin: "):
            add_reason(output, *split_reason(line.removeprefix("quorlin: "), folder))
        elif line.strip():
            output.add(level_of(line), line)


def split_reason(line: str, folder: str) -> tuple[str, str]:
    """Path and reason: there may be a colon and a blank in the asset's folder, too."""
    start = len(folder) if line.startswith(folder) else 0
    place, _, reason = line[start:].partition(": ")
    return line[:start] + place, reason


def add_reason(output: Output, place: str, reason: str) -> None:
    if reason.endswith(OUT_OF_SCOPE):
        output.add("note", reason, place)
        return
    output.add("reason", reason, place)
    output.incomplete = True
    output.unwritten |= any(words in reason for words in UNWRITTEN_REASON)
    output.skipped_segments += reason.endswith(SKIPPED_SEGMENT)
    for ending in EMPTY_PLAYLIST:
        if reason.endswith(ending):  # what is before it may belong to the playlist's name
            output.empty_playlists.add(f"{place}: {reason.removesuffix(ending)}")


def told(finding: dict) -> str:
    """A finding in one line."""
    place = finding.get("place")
    where = "first in" if finding["count"] > 1 else "in"
    return finding["text"].strip() + (f" ({where} {place})" if place else "")
