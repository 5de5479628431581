"""Folds what quorlin printed: each text once, with its count. Reads line by line, whatever the size of the output."""

import re
from collections.abc import Iterator
from dataclasses import dataclass, field

from .text import printable

MAX_LINE = 1000  # bytes kept of a line
MAX_TEXTS = 500  # different texts kept of an asset
VERDICT = "validation result: "
SEPARATOR = "-" * 48
VERIFIED = " has been verified."
# Second lines of findings that have two.
CONTINUATIONS = ("There is an additional independent stream", "Num of Channels Field", " (audio: ")
LEVEL = re.compile(r"\s*(?:\d{3} - )?(?:\[SV\]\s*: )?(FATAL |)(ERROR|FAILURE|WARNING)", re.IGNORECASE)


@dataclass
class Output:
    """What the two outputs of a run say."""
    verdict: str | None = None  # PASSED or FAILED, when the last line says so
    verified: int = 0  # playlists walked to their end
    unreadable_segments: int = 0
    reasons: int = 0  # lines on standard error that say why something failed or was skipped
    empty_playlists: int = 0  # of which no segment could be read
    texts: dict[tuple[str, str], int] = field(default_factory=dict)  # (level, text) to count
    more: int = 0  # lines with yet other texts

    def add(self, level: str, text: str) -> None:
        key = (level, text)
        if key in self.texts or len(self.texts) < MAX_TEXTS:
            self.texts[key] = self.texts.get(key, 0) + 1
        else:
            self.more += 1

    def first(self) -> str | None:
        """The first text that is more than a note."""
        return next((text for level, text in self.texts if level != "note"), None)


def read_lines(path: str) -> Iterator[str]:
    """Lines made printable, cut when they are over-long."""
    with open(path, "rb") as file:
        while line := file.readline(MAX_LINE + 1):
            cut = len(line) > MAX_LINE and not line.endswith(b"\n")
            rest = line
            while cut and rest and not rest.endswith(b"\n"):
                rest = file.readline(1 << 16)
            text = line[:MAX_LINE].removesuffix(b"\n").decode("utf-8", "surrogateescape")
            yield printable(text) + ("…" if cut else "")


def level_of(line: str) -> str:
    """error, warning or note. Findings of fragmented MP4 are errors when they do not say what they are."""
    if found := LEVEL.match(line):
        return "warning" if found[2].upper() == "WARNING" else "error"
    return "error" if line.startswith("[SV]") else "note"


def read_stdout(path: str, output: Output) -> None:
    """Findings, and the verdict: the last line. What only frames the findings is left out."""
    previous = last = ""
    finding: tuple[str, str] | None = None  # waits for its second line
    for line in read_lines(path):
        last = line
        if finding and line.startswith(CONTINUATIONS):
            line = finding[1].rstrip() + " " + line.strip()
        elif finding:
            output.add(*finding)
        finding = None
        if line.startswith("ERROR: Invalid segment path: "):
            output.unreadable_segments += 1
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
    header = previous.endswith(SEPARATOR) and line.endswith(":")
    return not line.strip() or line == SEPARATOR or header or line == "#EXT-X-DISCONTINUITY" or (
        line.endswith(VERIFIED) and level_of(line) == "note")


def read_stderr(path: str, output: Output) -> None:
    for line in read_lines(path):
        if line.startswith("quorlin: "):
            output.reasons += 1
            output.add("reason", line)
        elif line.strip():
            output.add(level_of(line), line)
        if line.endswith((": no segment could be read", "is expected: no segments")):
            output.empty_playlists += 1
