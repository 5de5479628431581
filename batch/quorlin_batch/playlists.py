"""A quick look into playlists: what they name, joined with the folder as quorlin joins it."""

import os
import re
import stat
from collections.abc import Iterator

LINE_SIZE = 4096
MAX_SIZE = 64 << 20  # bytes looked at: what is larger is no playlist
WITH_URI = (b"#EXT-X-MEDIA:", b"#EXT-X-I-FRAME-STREAM-INF:", b"#EXT-X-MAP:")
URI = re.compile(rb'[:,]\s*URI="([^"]*)"')
AUDIO = re.compile(rb"[:,]\s*TYPE=AUDIO\b")


class Playlist:
    """The files that a playlist names, by what they are."""

    def __init__(self) -> None:
        self.is_master = False
        self.playlists: list[str] = []  # variants and audio renditions
        self.others: list[str] = []  # playlists that quorlin does not validate
        self.segments: list[str] = []
        self.init_sections: list[str] = []


def lines_of(path: str) -> Iterator[bytes]:
    """Trimmed lines, over-long ones in pieces; none of what is no readable file."""
    try:
        file = os.open(path, os.O_RDONLY | os.O_NONBLOCK)  # a pipe is not waited for
    except (OSError, ValueError):
        return
    try:
        if not stat.S_ISREG(os.fstat(file).st_mode):
            return
        content = os.read(file, MAX_SIZE)
    except OSError:
        return
    finally:
        os.close(file)
    for line in content.split(b"\n"):
        if len(line) < LINE_SIZE:
            yield line.strip()
        else:
            yield from (line[at:at + LINE_SIZE].strip() for at in range(0, len(line), LINE_SIZE))


def read_playlist(path: str) -> Playlist:
    playlist = Playlist()
    folder = os.path.dirname(path)
    expected: list[str] | None = None  # the list that the next line's address goes to

    def add(addresses: list[str], address: bytes) -> None:
        addresses.append(os.path.normpath(folder + "/" + os.fsdecode(address)))

    for line in lines_of(path):
        if expected is not None and not line.startswith(b"#"):
            if line:
                add(expected, line)
            expected = None
        elif line.startswith(b"#EXT-X-STREAM-INF:"):
            playlist.is_master = True
            expected = playlist.playlists
        elif line.startswith(b"#EXTINF:"):
            expected = playlist.segments
        elif line.startswith(WITH_URI) and (found := URI.search(line)):
            if line.startswith(b"#EXT-X-MAP:"):
                add(playlist.init_sections, found[1])
            else:
                add(playlist.playlists if AUDIO.search(line) else playlist.others, found[1])
    return playlist
