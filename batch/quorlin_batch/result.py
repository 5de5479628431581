"""What is stored of a run: the result, for programs and for the summary; and what the asset's page
shows beside it."""

import os

from .fold import Fold, Group
from .text import printable, short
from .timing import TICKS, audio_offsets, measure, starts

PLACE = ("line", "segment", "offset", "stream", "time")
PLAYLIST_FACTS = ("line", "group_id", "name", "language", "codecs", "resolution", "bandwidth",
                  "average_bandwidth", "target_duration", "media_sequence", "playlist_type",
                  "key_method", "end_list", "segments", "master")


class Names:
    """Paths as they are shown: from the asset's folder on."""

    def __init__(self, asset: str):
        self.folder = os.path.dirname(asset).rstrip("/") + "/"

    def short(self, path: str | None) -> str | None:
        return path if path is None else printable(path.removeprefix(self.folder))


def entries_of(fold: Fold, names: Names) -> list[dict]:
    """Findings and reasons: first what fails, then what was left out, then the rest."""
    groups = sorted(fold.groups.values(),
                    key=lambda group: (not group.fails, not group.unvalidated, group.number))
    for index, group in enumerate(groups):
        group.number = index
    return [entry_of(group, names) for group in groups]


def entry_of(group: Group, names: Names) -> dict:
    entry = {"kind": group.kind, "id": printable(group.id), "fails": group.fails,
             "unvalidated": group.unvalidated, "count": group.count, "text": short(group.text),
             "playlist": names.short(group.playlist), "first": place_of(group.first, names)}
    if group.count > 1:
        entry["last"] = place_of(group.last, names)
    if group.repeated:
        entry["repeated"] = group.repeated
    if group.rules:
        entry["rules"] = sorted(map(sorted, group.rules))
    return entry


def place_of(event: dict, names: Names) -> dict:
    place = {key: event[key] for key in PLACE if event[key] is not None}
    if "segment" in place:
        place["segment"] = names.short(place["segment"])
    if event.get("file") not in (None, event["segment"], event["playlist"]):
        place["file"] = names.short(event["file"])
    return place


def inventory_of(fold: Fold, names: Names) -> list[dict]:
    """The streams that were validated."""
    return [{"playlist": names.short(stream.playlist), "id": stream.id,
             "codec": printable(stream.codec), "channels": stream.channels,
             "data_rate_kbps": stream.rate, "first_time": stream.first, "end_time": stream.end,
             "seconds": round(stream.ticks / TICKS, 3), "units": stream.units,
             "payload_bytes": stream.bytes, "segments": stream.segments}
            for stream in fold.streams.values()]


def playlists_of(fold: Fold, names: Names) -> list[dict]:
    """What the playlists say of themselves, and the master playlist of them."""
    return [{"playlist": names.short(path)} |
            {key: facts[key] for key in PLAYLIST_FACTS if key in facts}
            for path, facts in fold.playlists.items()]


def rows_of(fold: Fold, names: Names) -> list[dict]:
    """The segments of each playlist, with the findings of each: for the asset's page."""
    cells: dict[tuple, list] = {}
    for (playlist, line, segment, _), found in fold.cells.items():
        cells.setdefault((playlist, line, segment), []).append(found)
    codecs = [stream.codec for stream in fold.streams.values()]
    variant = next((segments for segments in fold.segments.values()
                    if any(time is not None for _, time in starts(segments, codecs, audio=False))), [])
    rows = []
    for playlist, segments in fold.segments.items():
        offsets = audio_offsets(segments, variant, codecs)
        rows.append({"playlist": names.short(playlist),
                     "segments": [segment_of(event, streams, cells, names, length,
                                             None if event["init"] else next(offsets))
                                  for (event, streams), length in
                                  zip(segments, measure(segments, codecs))]})
    return rows


def segment_of(event: dict, streams: list, cells: dict, names: Names, length: float | None,
               offset: float | None) -> list:
    found = cells.get((event["playlist"], event["line"], event["segment"]), ())
    return [names.short(event["segment"]), event["line"], event["duration"],
            event["range_length"] or event["bytes_read"], event["range_start"],
            event["discontinuity_sequence"], event["container"], int(event["init"]), streams,
            [[group.number, count, places] for group, count, places in found],
            length and round(length, 4), offset]
