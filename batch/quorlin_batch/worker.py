"""The worker: validates the assets of one chunk, one after the other, and stores their reports.

GNU parallel starts one for each chunk, on this host or another. What it imports is kept small, and
it starts no process but quorlin-json.
"""

import contextlib
import json
import os
import signal
import sys
import time

from .advice import advise
from .asset_page import store_asset_page
from .fold import Fold
from .kept import Kept
from .look import digest_of
from .process import run_program
from .reports import (FORMAT, RESULT, STDERR, STDOUT, Settings, batch_file, is_final, load_result,
                      nested, report_folder)
from .result import Names, entries_of, inventory_of, playlists_of, rows_of
from .text import printable, write_whole
from .verdict import is_retriable, judge

EXIT_DONE, EXIT_REFUSED, EXIT_TRY_AGAIN, EXIT_INTERRUPTED = 0, 69, 75, 130
# A run that somebody ended from outside is no crash of quorlin: there is no report of it.
OUTSIDE_SIGNALS = (signal.SIGINT, signal.SIGTERM, signal.SIGHUP)


class Interrupted(Exception):
    """The worker was asked to end, or somebody ended quorlin."""


def run_chunk(encoded_reports: str, chunk: str) -> int:
    """The reports folder (in hexadecimal, which no shell on the way can harm); first and end of
    the chunk."""
    for number in OUTSIDE_SIGNALS:
        if signal.getsignal(number) != signal.SIG_IGN:
            signal.signal(number, interrupt)
    keep_descriptors()
    settings = Settings.load(os.fsdecode(bytes.fromhex(encoded_reports)))
    if (version := version_of(settings.quorlin)) != settings.version:
        return refuse(settings, version)
    with open(batch_file(settings.reports, "assets"), "rb") as file:
        assets = file.read().split(b"\0")
    first, end = map(int, chunk.split("-"))
    status = EXIT_DONE
    progress = Progress()
    try:
        for asset in assets[first:end]:
            if validate_once(settings, os.fsdecode(asset)):
                progress.add()
            else:
                status = EXIT_TRY_AGAIN
    except Interrupted:
        return EXIT_INTERRUPTED
    progress.tell()
    return status


class Progress:
    """Tells the batch how many assets are done: a dot for each, a few times a second."""

    def __init__(self) -> None:
        self.dots = b""
        self.told = time.monotonic()

    def add(self) -> None:
        self.dots += b"."
        if time.monotonic() - self.told > 0.2:
            self.tell()

    def tell(self) -> None:
        with contextlib.suppress(OSError):  # the batch was killed; what is begun is ended
            os.write(1, self.dots)
        self.dots = b""
        self.told = time.monotonic()


def interrupt(*_: object) -> None:
    for number in OUTSIDE_SIGNALS:  # once is enough, and what follows is to be left in peace
        signal.signal(number, signal.SIG_IGN)
    raise Interrupted


def keep_descriptors() -> None:
    """The lock of the reports folder is held by the workers, not by what they start."""
    for name in os.listdir("/proc/self/fd"):
        try:
            if int(name) > 2:
                os.set_inheritable(int(name), False)
        except OSError:  # the one that listed them
            pass


def version_of(program: str) -> str | None:
    """What the quorlin beside it says of itself, the day when it was built included, in one line;
    None when it cannot be run."""
    said = Kept()
    try:
        run = run_program([os.path.join(os.path.dirname(program), "quorlin"), "-v"], 60, [said.add, lambda data: None])
    except OSError:
        return None
    text = said.content().decode("utf-8", "replace").replace("*", " ")
    lines = [line.strip() for line in text.splitlines() if line.strip()]
    return printable(", ".join(lines)) if run.exit_code == 0 and lines else None


def refuse(settings: Settings, version: str | None) -> int:
    """A host with another version: its findings would not be those of the others."""
    host = os.uname().nodename
    found = f"has {version}" if version else f"cannot run {settings.quorlin}"
    text = printable(f"{host}: refused: it {found}, not {settings.version}")
    write_whole(batch_file(settings.reports, f"refused-{host}"), text.encode())
    return EXIT_REFUSED


def validate_once(settings: Settings, asset: str) -> bool:
    """Does nothing when an earlier worker has done it. False: to be tried again."""
    try:
        before = None if make_folder(settings, asset) else load_result(settings, asset)
        if before and is_final(before):
            return True
        result = validate(settings, asset, before["attempts"] + 1 if before else 1)
    except OSError as error:
        print(f"quorlin-batch: {printable(asset)}: {error}", file=sys.stderr)
        return False
    return is_final(result)


def make_folder(settings: Settings, asset: str) -> bool:
    """That of the report. False when it is there already, perhaps with a report."""
    folder = report_folder(settings.reports, asset)
    try:
        os.makedirs(folder)
    except FileExistsError:
        return False
    return True


def validate(settings: Settings, asset: str, attempt: int) -> dict:
    """Runs quorlin-json and stores the report."""
    folder = report_folder(settings.reports, asset)
    digest = digest_of(asset)
    command = [settings.quorlin, "-i", asset]
    if settings.streams is not None:
        command += ["-o", make_stream_folder(settings.streams, asset)]
    fold, errors = Fold(), Kept()
    started = time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime())
    run = run_program(command, settings.limit, [fold.take, errors.add])
    if not run.timed_out and -run.exit_code in OUTSIDE_SIGNALS:
        raise Interrupted
    state, reason = judge(run, fold, errors.content())
    if fold.verdict:
        advise(fold)
    names = Names(asset)
    result = {
        "format": FORMAT,
        "asset": printable(asset),
        "state": state,
        "reason": reason,
        "verdict": fold.verdict and fold.verdict["result"],
        "exit_code": run.exit_code,
        "timed_out": run.timed_out,
        "retriable": is_retriable(run),
        "attempts": attempt,
        "started": started,
        "seconds": round(run.seconds, 3),
        "limit": run.limit,
        "host": os.uname().nodename,
        "quorlin": settings.version,
        "streams": settings.streams,
        "files": digest,
        "stderr": bool(errors.head),
        "findings": entries_of(fold, names),
        "more_findings": fold.more,
        "more_fails": fold.more_fails,
        "playlists": playlists_of(fold, names),
        "inventory": inventory_of(fold, names),
    }
    write(os.path.join(folder, STDOUT), fold.report.content())
    if errors.head:
        write(os.path.join(folder, STDERR), errors.content())
    stored, rows = dumps(result), dumps(rows_of(fold, names))
    store_asset_page(settings.reports, folder, result["asset"], stored, rows)
    # In one piece, and of half a one nobody takes notice: to rename it would cost another change of
    # the folder.
    write(os.path.join(folder, RESULT), stored.encode())
    return result


def dumps(data: object) -> str:
    return json.dumps(data, separators=(",", ":"))


def write(path: str, content: bytes) -> None:
    with open(path, "wb", buffering=0) as file:
        file.write(content)


def make_stream_folder(streams: str, asset: str) -> str:
    """An empty folder for an asset's elementary streams; quorlin itself makes no nested ones."""
    import shutil
    folder = nested(streams, asset)
    shutil.rmtree(folder, ignore_errors=True)
    os.makedirs(folder)
    return folder
