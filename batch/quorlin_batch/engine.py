"""Hands chunks of assets to GNU parallel. Its exit code is about this call only: the reports count."""

import contextlib
import os
import shlex
import signal
import subprocess
import sys
import threading
from collections.abc import Callable
from typing import BinaryIO

from .chunks import cost_of, divide
from .reports import MAX_ATTEMPTS, Settings, batch_file
from .text import write_whole

# Beyond the time limits of its assets a worker reads files and folds events, gigabytes of them at
# worst. GNU parallel ends it when even that hangs.
TIME_FOR_THE_REST = 1800
MAX_ASSETS = 1000  # in a chunk


class Engine:
    """What is passed through to GNU parallel, and what it is given."""

    def __init__(self, lock: int, jobs: str | None, sshlogins: list[str], sshloginfiles: list[str],
                 progress: Callable[[int], None] | None):
        self.lock = lock  # the workers hold it too: what is left of a killed batch is at work
        self.jobs = jobs
        self.sshlogins = sshlogins
        self.sshloginfiles = sshloginfiles
        self.progress = progress  # told how many assets are done
        self.interrupted = False

    def slots(self) -> int:
        """About how many workers there will be; for a host that cannot be asked, as many as here."""
        here = len(os.sched_getaffinity(0))
        jobs = int(self.jobs) if self.jobs and self.jobs.isdigit() else here
        hosts = sum(login.count(",") + 1 for login in self.sshlogins)
        for path in self.sshloginfiles:
            try:
                with open(path, "rb") as file:
                    hosts += sum(1 for line in file if line.strip())
            except OSError:
                pass
        return max(1, jobs or here) * max(1, hosts)

    def command(self, settings: Settings, largest: int) -> list[str]:
        # --plain: no options from the user's own configuration. A chunk is two numbers, so that no
        # name is in anybody's way.
        command = ["parallel", "--plain", "--will-cite", "--ungroup", "--halt", "never"]
        command += ["--retries", str(MAX_ATTEMPTS), "--termseq", "TERM,5000,KILL,25"]
        command += ["--joblog", batch_file(settings.reports, "joblog")]
        if settings.limit:
            command += ["--timeout", str(int(settings.limit) * largest + TIME_FOR_THE_REST)]
        if self.jobs is not None:
            command += ["--jobs", self.jobs]
        for login in self.sshlogins:
            command += ["--sshlogin", login]
        for file in self.sshloginfiles:
            command += ["--sshloginfile", file]
        reports = os.fsencode(settings.reports).hex()
        program = shlex.quote(os.path.abspath(sys.argv[0]))
        return [*command, f"{program} --chunk {reports} {{}}"]

    def run(self, settings: Settings, assets: list[str], largest: int = MAX_ASSETS) -> bool:
        """Validates the assets. False when the user interrupted it. `largest`: number of assets
        in a chunk."""
        write_whole(batch_file(settings.reports, "assets"),
                    b"\0".join(os.fsencode(asset) for asset in assets))
        settings.store()
        # GNU parallel heeds a hangup even below nohup. In a group of its own it gets none.
        below_nohup = signal.getsignal(signal.SIGHUP) == signal.SIG_IGN
        process = subprocess.Popen(self.command(settings, min(largest, len(assets))),
                                   stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                   pass_fds=[self.lock], process_group=0 if below_nohup else None,
                                   env=os.environ | {"PARALLEL_SHELL": "/bin/sh"})
        # While it starts, the assets are divided.
        threading.Thread(target=self.feed, args=(process.stdin, assets, largest)).start()
        self.follow(process, below_nohup)
        return not self.interrupted

    def feed(self, pipe: BinaryIO, assets: list[str], largest: int) -> None:
        """Hands the chunks over: number of the first asset, and of that after the last one."""
        with contextlib.suppress(BrokenPipeError), pipe:
            chunks = divide([cost_of(asset) for asset in assets], self.slots(), largest)
            pipe.write("".join(f"{first}-{end}\n" for first, end in chunks).encode())

    def follow(self, process: subprocess.Popen, below_nohup: bool) -> None:
        """Counts the dots of the workers until GNU parallel has ended."""
        def pass_on(*_: object) -> None:
            self.interrupted = True
            process.terminate()

        signals = (signal.SIGINT, signal.SIGTERM) + (() if below_nohup else (signal.SIGHUP,))
        previous = {number: signal.signal(number, pass_on) for number in signals}
        try:
            done = 0
            while dots := os.read(process.stdout.fileno(), 4096):
                done += dots.count(b".")
                if self.progress:
                    self.progress(done)
            process.wait()
        finally:
            process.stdout.close()
            for number, handler in previous.items():
                signal.signal(number, handler)
