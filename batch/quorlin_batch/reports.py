"""The folder of reports: where a report lies, whether it is still current.

An asset's report is report.txt and, if there is any, stderr.txt (what quorlin printed), index.html
(its page) and result.json (what became of it), in a folder named by the asset's absolute path.
result.json is written last: without it there is no report.
"""

import errno
import json
import os

from .look import digest_of
from .text import write_whole

FORMAT = 2
MAX_ATTEMPTS = 2
RESULT, STDOUT, STDERR, PAGE = "result.json", "report.txt", "stderr.txt", "index.html"
RESULT_KEYS = {"asset", "state", "reason", "verdict", "exit_code", "timed_out", "retriable",
               "attempts", "started", "seconds", "limit", "host", "quorlin", "streams", "files",
               "findings", "more_findings", "more_fails", "inventory", "playlists"}


class Settings:
    """What a batch and its workers, on whatever host, have in common."""

    def __init__(self, reports: str, quorlin: str, version: str, limit: float, streams: str | None):
        self.reports = reports
        self.quorlin = quorlin  # absolute path of quorlin-json
        self.version = version  # what it says of itself
        self.limit = limit  # seconds for one run, 0 for none
        self.streams = streams  # folder for elementary streams

    def store(self) -> None:
        write_whole(batch_file(self.reports, "settings.json"), json.dumps(vars(self)).encode())

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


def load_result(settings: Settings, asset: str) -> dict | None:
    """The result of an asset whose run came to its end; None for none and for a broken one."""
    path = os.path.join(report_folder(settings.reports, asset), RESULT)
    try:
        with open(path, encoding="utf-8") as file:
            result = json.load(file)
        return result if result["format"] == FORMAT and result.keys() >= RESULT_KEYS else None
    except (OSError, ValueError, AttributeError, TypeError, KeyError):
        return None


def is_current(result: dict, asset: str, settings: Settings) -> bool:
    """True when a run now would be given the same files, the same quorlin and no more time."""
    same = result["quorlin"] == settings.version and result["streams"] == settings.streams
    more_time = result["timed_out"] and (settings.limit == 0 or settings.limit > result["limit"])
    return same and not more_time and result["files"] == digest_of(asset)


def is_final(result: dict) -> bool:
    """A crash or a time limit is tried once more, everything else is as it is."""
    return not result["retriable"] or result["attempts"] >= MAX_ATTEMPTS


def remove_report(settings: Settings, asset: str) -> None:
    """Takes an old report away, its result first."""
    folder = report_folder(settings.reports, asset)
    if not os.path.isdir(folder):
        return
    for name in (RESULT, PAGE, STDOUT, STDERR):
        try:
            os.remove(os.path.join(folder, name))
        except OSError as error:
            if error.errno not in (errno.ENOENT, errno.ENOTDIR, errno.ENAMETOOLONG):
                raise
