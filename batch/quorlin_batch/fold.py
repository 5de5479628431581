"""Folds the events of a run: each finding once for its playlist, with its count, its first and last
place; the segments with what was found in them; the streams with what was read of them."""

import json
import re

from .kept import Kept
from .text import short

MAX_GROUPS = 2000  # findings and reasons that differ in id, playlist or effect
MAX_SEGMENTS = 50000  # segments that are kept with their facts
MAX_CELLS = 20000  # findings of single segments
MAX_CELL_PLACES = 3  # places kept of one finding of one segment
MAX_RULE_SETS = 50  # different sets of numbered rules before one line of the container
MAX_LINE = 8 << 20  # bytes of one event
# What makes a call of the audio analyzer fail, and the line of the container that says so.
RULE = re.compile(r"ztp-(\d{3}|fatal-.*)")
RULES_BROKEN = "ztp-errors"
TOO_MANY = "…"  # no rule: never accepted


class Group:
    """Findings or reasons of one id in one playlist."""
    __slots__ = ("kind", "id", "playlist", "fails", "unvalidated", "count", "repeated", "text",
                 "first", "last", "rules", "number")

    def __init__(self, kind: str, event: dict, number: int):
        self.kind = kind
        self.id = event["id"]
        self.playlist = event["playlist"]
        self.fails = event["fails"]
        self.unvalidated = event.get("unvalidated", False)
        self.count = self.repeated = 0
        self.text = event.get("text") or event.get("reason") or ""
        self.first = self.last = event
        self.rules: set[frozenset] | None = None
        self.number = number


class Stream:
    """An elementary stream of one playlist, over all its segments."""
    __slots__ = ("number", "playlist", "id", "codec", "channels", "rate", "first", "end", "ticks",
                 "units", "bytes", "segments")

    def __init__(self, number: int, playlist: str | None, facts: dict):
        self.number, self.playlist = number, playlist
        self.id, self.codec = facts["id"], facts["codec"]
        self.channels = self.rate = self.first = self.end = None
        self.ticks = self.units = self.bytes = self.segments = 0

    def add(self, facts: dict) -> list:
        """What a segment keeps of it."""
        first = facts["first_time"]
        earliest, end = ends_of(facts)
        if first is not None and end is not None:
            self.ticks += max(0, end - first)
            self.first = first if self.first is None else self.first
            self.end = end
        self.units += facts["units"]
        self.bytes += facts["payload_bytes"]
        self.segments += facts["units"] > 0
        self.channels = facts["channels"] or self.channels
        self.rate = facts["data_rate_kbps"] or self.rate
        return [self.number, first, earliest, end, facts["payload_bytes"]]


def ends_of(facts: dict) -> tuple[int | None, int | None]:
    """Where the stream ends in a segment, at the earliest and at the latest. While only the start of
    the last PES packet is known, it is taken to last as long as those before it, on average."""
    first, last, units = facts["first_time"], facts["last_time"], facts["units"]
    if facts["end_time"] is not None or first is None or last is None:
        return facts["end_time"], facts["end_time"]
    return last, last + ((last - first) // (units - 1) if units > 1 else 0)


class Fold:
    """Takes the output of quorlin-json in pieces of any size."""

    def __init__(self) -> None:
        self.report = Kept()
        self.rest = b""
        self.broken = False
        self.verdict: dict | None = None
        self.groups: dict[tuple, Group] = {}
        self.more = 0  # findings without a group, for lack of room
        self.more_fails = False
        self.playlists: dict[str | None, dict] = {}
        self.segments: dict[str | None, list] = {}
        self.again: str | None = None  # playlist that is walked a second time
        self.segment_count = self.segments_with_content = 0
        self.streams: dict[tuple, Stream] = {}
        self.cells: dict[tuple, list] = {}
        self.rules: set[str] = set()
        self.handlers = {"finding": self.add_finding, "reason": self.add_reason,
                         "segment": self.add_segment, "playlist": self.add_playlist,
                         "verdict": self.end}

    def take(self, data: bytes) -> None:
        end = data.rfind(b"\n")
        if end < 0:
            self.rest += data
            if len(self.rest) > MAX_LINE:
                self.rest, self.broken = b"", True
            return
        lines, self.rest = self.rest + data[:end], data[end + 1:]
        try:
            self.take_events(json.loads(b"[" + lines.replace(b"\n", b",") + b"]"))
        except (ValueError, KeyError, TypeError, AttributeError, RecursionError):
            self.broken = True

    def is_readable(self) -> bool:
        """At the end: all of the output were events."""
        return not self.broken and not self.rest

    def take_events(self, events: list[dict]) -> None:
        text = "".join([event["text"] for event in events if "text" in event])
        self.report.add(text.encode("utf-8", "surrogateescape"))
        handlers = self.handlers
        for event in events:
            if handler := handlers.get(event["event"]):
                handler(event)

    def end(self, event: dict) -> None:
        self.verdict = event

    def group(self, kind: str, event: dict, key: tuple) -> Group | None:
        if group := self.groups.get(key):
            group.last = event
        elif len(self.groups) < MAX_GROUPS:
            group = self.groups[key] = Group(kind, event, len(self.groups))
        else:
            self.more += 1
            self.more_fails |= event["fails"] or event.get("unvalidated", False)
            return None
        group.count += 1
        return group

    def add_finding(self, event: dict) -> None:
        name = event["id"]
        group = self.group("finding", event, (event["playlist"], name, event["fails"]))
        if name.startswith("ztp-"):
            self.add_rule(name, group)
        if group:
            group.repeated += event["repeated"]
            if event["segment"] is not None:
                self.add_to_cell(event, group)

    def add_rule(self, name: str, group: Group | None) -> None:
        """The line of the container keeps which rules were broken in its call."""
        if name != RULES_BROKEN:
            if RULE.fullmatch(name):
                self.rules.add(name)
            return
        rules, self.rules = frozenset(self.rules), set()
        if group:
            group.rules = group.rules or set()
            if len(group.rules) < MAX_RULE_SETS:
                group.rules.add(rules)
            else:
                group.rules.add(frozenset({TOO_MANY}))

    def add_reason(self, event: dict) -> None:
        key = (event["playlist"], event["id"], event["fails"], event["unvalidated"])
        group = self.group("reason", event, key)
        if event["id"].startswith("ztp-"):
            self.add_rule(event["id"], None)
        if group and event["segment"] is not None:
            self.add_to_cell(event, group)

    def add_advice(self, name: str, event: dict, text: str) -> None:
        """`event`: the segment or the playlist that it is about."""
        place = {"line": None, "offset": None, "stream": None, "time": None, "segment": None} | event
        place |= {"id": name, "fails": False, "unvalidated": False, "text": text, "file": None}
        group = self.group("advice", place, (event["playlist"], name))
        if group and place["segment"] is not None:
            self.add_to_cell(place, group)

    def add_to_cell(self, event: dict, group: Group) -> None:
        key = (event["playlist"], event["line"], event["segment"], group.number)
        if found := self.cells.get(key):
            found[1] += 1
        elif len(self.cells) < MAX_CELLS:
            found = self.cells[key] = [group, 1, []]
        else:
            return
        if len(found[2]) < MAX_CELL_PLACES and not (found[2] and event.get("repeated")):
            place = [event["offset"], event["stream"], event["time"]]
            text = event.get("text") or event.get("reason")
            found[2].append(place if text == group.text else [*place, short(text)])

    def add_playlist(self, event: dict) -> None:
        facts = {key: short(value) if isinstance(value, str) else value
                 for key, value in event.items() if value is not None}
        path = event["playlist"]
        # A rendition that is a variant, too, is validated as both: its segments are the same.
        self.again = path if path in self.segments else None
        self.playlists[path] = self.playlists.get(path, {}) | facts

    def add_segment(self, event: dict) -> None:
        self.rules.clear()
        playlist = event["playlist"]
        if playlist is not None and playlist == self.again:
            return
        streams = [self.stream(playlist, facts) for facts in event["streams"]]
        if not event["init"]:
            self.segments_with_content += any(facts["units"] for facts in event["streams"])
        if self.segment_count < MAX_SEGMENTS:
            self.segments.setdefault(playlist, []).append((event, streams))
        self.segment_count += 1

    def stream(self, playlist: str | None, facts: dict) -> list:
        key = (playlist, facts["id"], facts["codec"])
        stream = self.streams.get(key)
        if stream is None:
            stream = self.streams[key] = Stream(len(self.streams), playlist, facts)
        return stream.add(facts)
