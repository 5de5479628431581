"""The folder of reports: where a report lies, whether it is still current, how it is stored.

An asset's report is report.txt and stderr.txt (what quorlin printed) and result.json (what became
of it), in a folder named by the asset's absolute path. result.json is written last: without it
there is no report.
"""

import errno
import hashlib
import json
import os
from collections.abc import Iterable
from dataclasses import asdict, dataclass

from .playlists import read_playlist
from .text import write_whole

FORMAT = 1
MAX_ATTEMPTS = 2
RESULT_KEYS = {
    "format", "asset", "state", "reason", "verdict", "exit_code", "timed_out", "retriable",
    "attempts", "seconds", "limit", "host", "quorlin", "streams", "files", "findings",
    "more_findings"
}
RESULT, STDOUT, STDERR = "result.json", "report.txt", "stderr.txt"


@dataclass
class Settings:
    """What a batch and its jobs, on whatever host, have in common."""
    reports: str
    quorlin: str  # absolute path of the program
    version: str  # what quorlin -v prints
    limit: float  # seconds for one run, 0 for none
    streams: str | None  # folder for elementary streams

    def store(self) -> None:
        write_whole(batch_file(self.reports, "settings.json"), json.dumps(asdict(self)).encode())

    @classmethod
    def load(cls, reports: str) -> "Settings":
        with open(batch_file(reports, "settings.json"), encoding="utf-8") as file:
            return cls(**json.load(file))


def batch_file(reports: str, name: str) -> str:
    """A file of the batch itself."""
    return os.path.join(reports, "batch", name)


def nested(top: str, asset: str) -> str:
    """The folder of an asset below `top`."""
    return os.path.join(top, asset.lstrip("/"))


def report_folder(reports: str, asset: str) -> str:
    return nested(os.path.join(reports, "assets"), asset)


@dataclass
class Look:
    """An asset's files, as they are on the disk at one moment."""
    digest: str  # of their names, sizes and times
    is_playlist: bool
    named: int  # segments that are named, and init sections that are not there
    segments: int  # segment files that are there


def look_at(asset: str) -> Look:
    """The playlist, those of variants and audio renditions, their segments; or a series' files."""
    playlists = [asset] if is_playlist(asset) else []
    if playlists and (master := read_playlist(asset)).is_master:
        playlists += dict.fromkeys(master.playlists)
    media = [read_playlist(path) for path in playlists]
    init_sections = [path for each in media for path in each.init_sections]
    segments = [path for each in media for path in each.segments]
    if not playlists:
        segments = series_files(asset)
    digest = hashlib.sha256()
    for path in sorted({asset, *playlists, *init_sections}):
        stamp(path, digest)
    present = sum(stamp(path, digest) for path in sorted(set(segments)))
    named = len(segments) + sum(not os.path.exists(path) for path in init_sections)
    return Look(digest.hexdigest(), bool(playlists), named, present)


def is_playlist(asset: str) -> bool:
    return asset.endswith((".m3u8", ".m3u"))


def stamp(path: str, digest: "hashlib._Hash") -> bool:
    """Adds a file's name, size and time to the digest; True when it is there."""
    try:
        status = os.stat(path)
        text, present = f"{status.st_size} {status.st_mtime_ns}", True
    except (OSError, ValueError):
        text, present = "missing", False
    digest.update(os.fsencode(path) + b"\0" + text.encode() + b"\0")
    return present


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


def load_result(settings: Settings, asset: str) -> dict | None:
    """The result of an asset whose run came to its end; None for none and for a broken one."""
    path = os.path.join(report_folder(settings.reports, asset), RESULT)
    try:
        with open(path, encoding="utf-8") as file:
            result = json.load(file)
        return result if result.keys() >= RESULT_KEYS and result["format"] == FORMAT else None
    except (OSError, ValueError, AttributeError):
        return None


def is_current(result: dict, asset: str, settings: Settings) -> bool:
    """True when a run now would be given the same files, the same quorlin and no more time."""
    same = result["quorlin"] == settings.version and result["streams"] == settings.streams
    more_time = result["timed_out"] and (settings.limit == 0 or settings.limit > result["limit"])
    return same and not more_time and result["files"] == look_at(asset).digest


def remove_report(settings: Settings, asset: str) -> None:
    """Takes an old report away, its result first."""
    folder = report_folder(settings.reports, asset)
    remove_files(os.path.join(folder, name) for name in (RESULT, STDOUT, STDERR))


def remove_files(paths: Iterable[str]) -> None:
    for path in paths:
        try:
            os.remove(path)
        except OSError as error:
            if error.errno not in (errno.ENOENT, errno.ENOTDIR, errno.ENAMETOOLONG):
                raise


def is_final(result: dict) -> bool:
    """A crash or a time limit is tried once more, everything else is as it is."""
    return not result["retriable"] or result["attempts"] >= MAX_ATTEMPTS
