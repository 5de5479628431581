"""What the time stamps say of each segment: how long it is, and how audio and video lie together."""

TICKS = 90000  # a second of the clock that places and facts are told in
AUDIO = ("mp4a", "ac-3", "ec-3", "ac-4")


def measure(segments: list[tuple], streams: list) -> list[tuple[float | None, float | None]]:
    """For each segment of one playlist: its duration in seconds, up to the first time of the next
    one or, where nothing follows, to its own end; and by how many ms its audio begins after its
    video. `streams`: the codec of each stream."""
    media = [(event, times_of(parts)) for event, parts in segments]
    followers = [index for index, (event, _) in enumerate(media) if not event["init"]]
    following = dict(zip(followers, followers[1:]))
    result = []
    for index, (event, times) in enumerate(media):
        lead = leading(times, streams)
        after = media[following[index]] if index in following else None
        length = None
        if lead is not None:
            first, _, end = times[lead]
            if after and lead in after[1] and same_clock(event, after[0]):
                end = after[1][lead][0]
            length = None if end is None or end <= first else (end - first) / TICKS
        result.append((length, audio_offset(times, streams)))
    return result


def times_of(parts: list) -> dict[int, tuple[int, int | None, int | None]]:
    """Of each stream that has a time: the first one, and where it ends at the earliest and at the
    latest."""
    return {number: (first, *ends) for number, first, *ends, _ in parts if first is not None}


def lasts(event: dict) -> float:
    """What the playlist says of the segment's duration."""
    return event["duration"] or 0.0


def same_clock(event: dict, other: dict) -> bool:
    return event["discontinuity_sequence"] == other["discontinuity_sequence"]


def leading(times: dict, streams: list) -> int | None:
    """The stream that a segment is measured by: video, or else the first one."""
    return min(times, key=lambda number: (streams[number] in AUDIO, number), default=None)


def audio_offset(times: dict, streams: list) -> float | None:
    audio = [times[number][0] for number in times if streams[number] in AUDIO]
    video = [times[number][0] for number in times if streams[number] not in AUDIO]
    return round((audio[0] - video[0]) / TICKS * 1000, 1) if audio and video else None
