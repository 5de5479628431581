"""Hands the jobs to GNU parallel. Its exit code speaks of this call only: the reports count."""

import base64
import os
import shlex
import signal
import subprocess
import sys
from collections.abc import Iterable
from dataclasses import dataclass, field

from .reports import MAX_ATTEMPTS, Settings, batch_file
from .text import write_whole

# Beyond its own time limit a job reads files and folds findings, gigabytes of them at worst. GNU
# parallel ends it when even that hangs.
TIME_FOR_THE_REST = 1800


@dataclass
class Engine:
    """What is passed through to GNU parallel."""
    lock: int  # the jobs hold it too: what is left of a killed batch still works in the folder
    jobs: str | None = None
    sshlogins: list[str] = field(default_factory=list)
    sshloginfiles: list[str] = field(default_factory=list)
    bar: bool = False


def parallel_command(engine: Engine, settings: Settings) -> list[str]:
    # --plain: no options from the user's own configuration. A job is a number, so that no name is
    # in anybody's way.
    command = ["parallel", "--plain", "--will-cite", "--null", "--ungroup", "--halt", "never"]
    command += ["--retries", str(MAX_ATTEMPTS), "--termseq", "TERM,5000,KILL,25"]
    command += ["--joblog", batch_file(settings.reports, "joblog")]
    if settings.limit:
        command += ["--timeout", str(int(settings.limit) + TIME_FOR_THE_REST)]
    if engine.jobs is not None:
        command += ["--jobs", engine.jobs]
    for login in engine.sshlogins:
        command += ["--sshlogin", login]
    for file in engine.sshloginfiles:
        command += ["--sshloginfile", file]
    if engine.bar:
        command.append("--bar")
    reports = base64.urlsafe_b64encode(os.fsencode(settings.reports)).decode()
    return [*command, f"{shlex.quote(os.path.abspath(sys.argv[0]))} --run-job {reports} {{}}"]


def run_jobs(engine: Engine, settings: Settings, assets: list[str], to_do: Iterable[int]) -> bool:
    """Runs the jobs of `to_do` (numbers of assets). False when the user interrupted them."""
    names = b"".join(os.fsencode(asset) + b"\0" for asset in assets)
    write_whole(batch_file(settings.reports, "assets"), names)
    settings.store()
    interrupted = False
    environment = os.environ | {"PARALLEL_SHELL": "/bin/sh"}
    # GNU parallel heeds a hangup even below nohup. In a group of its own it gets none.
    below_nohup = signal.getsignal(signal.SIGHUP) == signal.SIG_IGN
    process = subprocess.Popen(parallel_command(engine, settings), stdin=subprocess.PIPE,
                               env=environment, pass_fds=[engine.lock],
                               process_group=0 if below_nohup else None)

    def pass_on(*_: object) -> None:
        nonlocal interrupted
        interrupted = True
        process.terminate()

    signals = (signal.SIGINT, signal.SIGTERM) + (() if below_nohup else (signal.SIGHUP,))
    previous = {number: signal.signal(number, pass_on) for number in signals}
    try:
        process.communicate(b"".join(b"%d\0" % index for index in to_do))
    except BrokenPipeError:
        process.wait()
    finally:
        for number, handler in previous.items():
            signal.signal(number, handler)
    return not interrupted
