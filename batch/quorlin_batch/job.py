"""One job of GNU parallel: runs quorlin on one asset; when that has ended, stores its report."""

import base64
import contextlib
import json
import os
import shutil
import signal
import socket
import subprocess
import sys
import time

from .findings import Output, read_stderr, read_stdout
from .reports import (FORMAT, RESULT, STDERR, STDOUT, Settings, batch_file, is_final, load_result,
                      look_at, nested, remove_files, report_folder)
from .text import printable, write_whole
from .verdict import Run, judge

EXIT_DONE, EXIT_TRY_AGAIN, EXIT_INTERRUPTED = 0, 75, 130
# A run that somebody ended from outside is no crash of quorlin: there is no report of it.
OUTSIDE_SIGNALS = (signal.SIGINT, signal.SIGTERM, signal.SIGHUP)


class Interrupted(Exception):
    """The job was asked to end, or somebody ended quorlin."""


def run_job(encoded_reports: str, index: str) -> int:
    """The reports folder (in base64, which no shell on the way can harm), the asset's number."""
    for number in OUTSIDE_SIGNALS:
        signal.signal(number, interrupt)
    reports = os.fsdecode(base64.urlsafe_b64decode(encoded_reports))
    settings = Settings.load(reports)
    with open(batch_file(reports, "assets"), "rb") as file:
        asset = os.fsdecode(file.read().split(b"\0")[int(index)])
    try:
        result = validate(settings, asset)
    except Interrupted:
        return EXIT_INTERRUPTED
    except OSError as error:
        print(f"quorlin-batch: {printable(asset)}: {error}", file=sys.stderr)
        return EXIT_TRY_AGAIN
    return EXIT_DONE if is_final(result) else EXIT_TRY_AGAIN


def interrupt(*_: object) -> None:
    for number in OUTSIDE_SIGNALS:  # once is enough, and what follows is to be left in peace
        signal.signal(number, signal.SIG_IGN)
    raise Interrupted


def validate(settings: Settings, asset: str) -> dict:
    """Runs quorlin and stores the report. Attempts count from call to call."""
    folder = report_folder(settings.reports, asset)
    os.makedirs(folder, exist_ok=True)
    before = load_result(settings, asset)
    look = look_at(asset)
    beside = [os.path.join(folder, name + ".new") for name in (STDOUT, STDERR)]
    remove_files(beside)  # a quorlin that outlived its job may still write to them
    try:
        run = run_quorlin(settings, asset, *beside)
        output = Output()
        read_stdout(beside[0], asset, output)
        read_stderr(beside[1], asset, output)
        state, reason = judge(run, output, look)
        result = {
            "format": FORMAT,
            "asset": printable(asset),
            "state": state,
            "reason": reason,
            "verdict": output.verdict,
            "exit_code": run.exit_code,
            "timed_out": run.timed_out,
            "retriable": run.retriable(),
            "attempts": before["attempts"] + 1 if before else 1,
            "seconds": round(run.seconds, 3),
            "limit": run.limit,
            "host": socket.gethostname(),
            "quorlin": settings.version,
            "streams": settings.streams,
            "files": look.digest,
            "findings": output.findings(),
            "more_findings": output.more,
        }
        for path in beside:
            os.replace(path, path.removesuffix(".new"))
        write_whole(os.path.join(folder, RESULT), json.dumps(result, indent=1).encode())
        return result
    finally:
        remove_files(beside)


def run_quorlin(settings: Settings, asset: str, stdout_path: str, stderr_path: str) -> Run:
    command = [settings.quorlin, "-i", asset]
    if settings.streams is not None:
        command += ["-o", make_stream_folder(settings.streams, asset)]
    started = time.monotonic()
    timed_out = False
    with open(stdout_path, "wb") as stdout, open(stderr_path, "wb") as stderr:
        # A group of its own: --quorlin may name a script, whose children have to go with it, even
        # when it has ended itself.
        process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=stdout, stderr=stderr,
                                   process_group=0)
        try:
            process.wait(settings.limit or None)
        except subprocess.TimeoutExpired:
            timed_out = True
        finally:
            with contextlib.suppress(ProcessLookupError):
                os.killpg(process.pid, signal.SIGKILL)
            exit_code = process.wait()
    if not timed_out and -exit_code in OUTSIDE_SIGNALS:
        raise Interrupted
    return Run(exit_code, timed_out, time.monotonic() - started, settings.limit)


def make_stream_folder(streams: str, asset: str) -> str:
    """An empty folder for an asset's elementary streams; quorlin itself makes no nested ones."""
    folder = nested(streams, asset)
    shutil.rmtree(folder, ignore_errors=True)
    os.makedirs(folder)
    return folder
