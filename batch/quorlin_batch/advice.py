"""Advice: what the times and sizes of the segments say against RFC 8216. Beside the findings, and
no part of the verdict unless --advice=fail asks for it."""

import os
import re
from collections.abc import Iterator

from .timing import AUDIO, TICKS, measure, same_clock, starts, times_of

# Seconds that are no matter of a wrong playlist: leading pictures of an open group of pictures are
# shown before the first one in the file, audio frames do not end where pictures do.
EXTINF_TOLERANCE = 0.3
EXTINF_TOLERANCE_INTEGER = 0.8
GAP_TOLERANCE_VIDEO = 0.3
GAP_TOLERANCE_AUDIO = 0.1
JUMP = 3.0
BOUNDARY_TOLERANCE = 0.1
BANDWIDTH_TOLERANCE = 1.01
MAX_WINDOW = 100  # segments looked at together
NOT_A_PLAIN_NAME = re.compile(r"\?|%[0-9A-Fa-f]{2}")


def advise(fold) -> None:
    """Adds the advice on all playlists to what a run found."""
    codecs = [stream.codec for stream in fold.streams.values()]
    for path, segments in fold.segments.items():
        facts = fold.playlists.get(path)
        if facts is None:  # a series: it promises nothing
            continue
        media = [(event, times_of(parts)) for event, parts in segments if not event["init"]]
        for name, event, text in (*on_playlist(facts, media), *on_times(segments, codecs),
                                  *on_continuity(media, codecs)):
            fold.add_advice(name, event, text)
    for name, event, text in on_boundaries(fold, codecs):
        fold.add_advice(name, event, text)


def on_playlist(facts: dict, media: list) -> Iterator[tuple]:
    target = facts.get("target_duration")
    for event, _ in media:
        length = event["duration"]
        if target and length is not None and int(length + 0.5) > target:
            yield ("advice-target-duration", event,
                   f"EXTINF {length} s, EXT-X-TARGETDURATION {target} s")
        if is_no_name(event):
            yield "advice-uri", event, f"the address is not the name of a file: {event['uri']}"
        if event["container"] is None and facts.get("key_method"):
            method = facts["key_method"]
            yield "advice-key", event, f"cannot be read: EXT-X-KEY with METHOD={method}"
    if facts.get("playlist_type") == "VOD" and not facts.get("end_list"):
        yield "advice-endlist", facts, "EXT-X-PLAYLIST-TYPE is VOD, EXT-X-ENDLIST is missing"
    promised = facts.get("bandwidth")
    peak, event = peak_rate([event for event, _ in media], target)
    if promised and peak > promised * BANDWIDTH_TOLERANCE:
        yield ("advice-bandwidth", event,
               f"BANDWIDTH {promised} bit/s, peak segment bit rate {peak:.0f} bit/s")


def is_no_name(event: dict) -> bool:
    """True for an address that would have to be decoded to be the name of a file."""
    return (event["container"] is None and NOT_A_PLAIN_NAME.search(event["uri"]) is not None
            and not os.path.lexists(event["segment"]))


def peak_rate(events: list[dict], target: float | None) -> tuple[float, dict | None]:
    """The largest bit rate of segments in a row that are together between half of the target
    duration and one and a half; and the first of them."""
    peak, place = 0.0, None
    for first, event in enumerate(events if target else ()):
        seconds = size = 0
        for each in events[first:first + MAX_WINDOW]:
            if each["duration"] is None or seconds + each["duration"] > 1.5 * target:
                break
            seconds += each["duration"]
            size += each["range_length"] or each["bytes_read"]
            if seconds >= 0.5 * target and seconds > 0 and size * 8 / seconds > peak:
                peak, place = size * 8 / seconds, event
    return peak, place


def on_times(segments: list, codecs: list[str]) -> Iterator[tuple]:
    for (event, _), length in zip(segments, measure(segments, codecs)):
        said = event["duration"]
        if event["init"] or length is None or said is None:
            continue
        tolerance = EXTINF_TOLERANCE_INTEGER if said == int(said) else EXTINF_TOLERANCE
        # A jump of the time stamps is advice of its own.
        if tolerance < abs(said - length) < tolerance + JUMP:
            yield "advice-extinf", event, f"EXTINF {said} s, measured {length:.3f} s"


def on_continuity(media: list, codecs: list[str]) -> Iterator[tuple]:
    for (event, times), (following, then) in zip(media, media[1:]):
        if not same_clock(event, following):
            continue
        for number in times.keys() & then.keys():
            _, earliest, latest = times[number]
            first = then[number][0]
            if earliest is None or latest is None:
                continue
            gap = (max(0, first - latest) + min(0, first - earliest)) / TICKS
            tolerance = GAP_TOLERANCE_AUDIO if codecs[number] in AUDIO else GAP_TOLERANCE_VIDEO
            if abs(gap) <= tolerance:
                continue
            name, words = what_is_wrong(gap)
            yield (name, following | {"time": first},
                   f"{words} ({codecs[number]}: {abs(gap):.3f} s)")


def what_is_wrong(gap: float) -> tuple[str, str]:
    if gap > JUMP:
        return "advice-discontinuity", "the time stamps jump forwards"
    if gap < -JUMP:
        return "advice-discontinuity", "the time stamps jump backwards"
    if gap > 0:
        return "advice-gap", "missing before this segment"
    return "advice-overlap", "in the previous segment, too"


def on_boundaries(fold, codecs: list[str]) -> Iterator[tuple]:
    """Variants with video against the first of them."""
    reference = None
    for path, segments in fold.segments.items():
        if path not in fold.playlists:
            continue
        begun = starts(segments, codecs, audio=False)
        if not begun or any(start is None for _, start in begun):
            continue
        if reference is None:
            reference = begun
        elif are_alike(begun, reference):
            for (event, start), (_, other) in zip(begun, reference):
                if abs(start - other) > BOUNDARY_TOLERANCE * TICKS:
                    yield ("advice-boundaries", event,
                           f"begins at {start / TICKS:.3f} s, in the first variant at "
                           f"{other / TICKS:.3f} s")


def are_alike(segments: list[tuple], others: list[tuple]) -> bool:
    """As many segments, and as long."""
    return len(segments) == len(others) and all(
        abs((event["duration"] or 0) - (other["duration"] or 0)) < 0.5
        for (event, _), (other, _) in zip(segments, others))
