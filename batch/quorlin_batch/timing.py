"""What the time stamps say of each segment: how long it is, and how audio and video lie together."""

from collections.abc import Iterator

TICKS = 90000  # a second of the clock that places and facts are told in
AUDIO = ("mp4a", "ac-3", "ec-3", "ac-4")


def measure(segments: list[tuple], streams: list) -> list[float | None]:
    """The duration of each segment of one playlist in seconds, up to the first time of the next one
    or, where nothing follows, to its own end. `streams`: the codec of each stream."""
    media = [(event, times_of(parts)) for event, parts in segments]
    followers = [index for index, (event, _) in enumerate(media) if not event["init"]]
    following = dict(zip(followers, followers[1:]))
    lengths = []
    for index, (event, times) in enumerate(media):
        lead = leading(times, streams)
        after = media[following[index]] if index in following else None
        length = None
        if lead is not None:
            first, _, end = times[lead]
            if after and lead in after[1] and same_clock(event, after[0]):
                end = after[1][lead][0]
            length = None if end is None or end <= first else (end - first) / TICKS
        lengths.append(length)
    return lengths


def starts(segments: list[tuple], streams: list, audio: bool) -> list[tuple[dict, int | None]]:
    """For each segment, init sections left out, when its audio or its video begins."""
    found = []
    for event, parts in segments:
        if not event["init"]:
            times = times_of(parts)
            own = [times[each][0] for each in times if (streams[each] in AUDIO) == audio]
            found.append((event, own[0] if own else None))
    return found


def audio_offsets(segments: list[tuple], variant: list[tuple], streams: list) -> Iterator[float | None]:
    """By how many ms the audio of each segment, init sections left out, begins after the video: its
    own, or, of a rendition, that of the same segment of `variant`."""
    own = starts(segments, streams, audio=False)
    video = own if any(time is not None for _, time in own) else starts(variant, streams, audio=False)
    for index, (event, begin) in enumerate(starts(segments, streams, audio=True)):
        other, shown = video[index] if index < len(video) else (event, None)
        known = begin is not None and shown is not None and same_clock(event, other)
        yield round((begin - shown) / TICKS * 1000, 1) if known else None


def times_of(parts: list) -> dict[int, tuple[int, int | None, int | None]]:
    """Of each stream that has a time: the first one, and where it ends at the earliest and at the
    latest."""
    return {number: (first, *ends) for number, first, *ends, _ in parts if first is not None}


def same_clock(event: dict, other: dict) -> bool:
    return event["discontinuity_sequence"] == other["discontinuity_sequence"]


def leading(times: dict, streams: list) -> int | None:
    """The stream that a segment is measured by: video, or else the first one."""
    return min(times, key=lambda number: (streams[number] in AUDIO, number), default=None)
