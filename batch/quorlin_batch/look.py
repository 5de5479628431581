"""What an asset's files look like on the disk: what a report is compared with later."""

import hashlib
import os

from .playlists import read_playlist


def is_playlist(asset: str) -> bool:
    """As quorlin takes it: by these endings, in lower case alone."""
    return asset.endswith((".m3u8", ".m3u"))


def digest_of(asset: str) -> str:
    """Of names, sizes and times of the playlist, those of variants and audio renditions, and their
    segments; or of a series' files."""
    files = set(files_of_playlist(asset) if is_playlist(asset) else series_files(asset))
    digest = hashlib.sha256()
    for path in sorted(files | {asset}):
        digest.update(os.fsencode(path) + stamp(path))
    return digest.hexdigest()


def files_of_playlist(asset: str) -> list[str]:
    master = read_playlist(asset)
    playlists = list(dict.fromkeys(master.playlists)) if master.is_master else []
    files = playlists.copy()
    for playlist in (master, *map(read_playlist, playlists)):
        files += playlist.segments + playlist.init_sections
    return files


def stamp(path: str) -> bytes:
    try:
        status = os.stat(path)
    except (OSError, ValueError):
        return b"\0missing\0"
    return b"\0%d %d\0" % (status.st_size, status.st_mtime_ns)


def series_files(asset: str) -> list[str]:
    """The file itself, or, for the name of a series, every file beside it that may be of it."""
    folder, name = os.path.split(asset)
    if "%" not in name or os.path.exists(asset):
        return [asset]
    start, ending = name[:name.index("%")], os.path.splitext(name)[1]
    try:
        return sorted(os.path.join(folder, other) for other in os.listdir(folder)
                      if other.startswith(start) and other.endswith(ending))
    except OSError:
        return []
