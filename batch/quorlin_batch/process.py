"""One run of a program: its outputs as they come, a time limit, and nothing left of it."""

import contextlib
import fcntl
import os
import select
import signal
import time

BUFFER = 1 << 20
# Outputs are read when the program has ended or when it is time to look: to be woken for every
# line would cost more than the lines.
SHORT_WAIT, LONG_WAIT = 5, 80  # ms
MUCH = 256 << 10  # bytes at one look
F_SETPIPE_SZ = 1031
ENVIRONMENT = dict(os.environb)


class Run:
    """How a run ended. A negative exit code is the signal that ended it."""

    def __init__(self, exit_code: int, timed_out: bool, seconds: float, limit: float):
        self.exit_code = exit_code
        self.timed_out = timed_out
        self.seconds = seconds
        self.limit = limit


def run_program(command: list[str], limit: float, takers: list) -> Run:
    """Hands what it writes to standard output and to standard error on to the two `takers`.
    `limit`: seconds, 0 for none."""
    started = time.monotonic()
    pipes = [open_pipe() for _ in takers]
    sources = {pipe[0]: taker for pipe, taker in zip(pipes, takers)}
    pid = 0
    try:
        try:
            pid = start(command, *(pipe[1] for pipe in pipes))
        finally:
            for pipe in pipes:
                os.close(pipe[1])
        timed_out = not follow(pid, sources, started + limit if limit else None)
        exit_code = end_group(pid)
        pid = 0
        read_all(sources)  # what it left: a stray child may hold the pipes open
    finally:
        if pid:
            end_group(pid)
        for source in sources:
            os.close(source)
    return Run(exit_code, timed_out, time.monotonic() - started, limit)


def open_pipe() -> tuple[int, int]:
    source, end = os.pipe()
    os.set_blocking(source, False)
    with contextlib.suppress(OSError):  # more than a user may have: it stays small
        fcntl.fcntl(end, F_SETPIPE_SZ, BUFFER)
    return source, end


def start(command: list[str], output: int, errors: int) -> int:
    """Far cheaper than subprocess.Popen. A group of its own: the program may be a script, whose
    children have to go with it."""
    actions = [(os.POSIX_SPAWN_OPEN, 0, os.devnull, os.O_RDONLY, 0),
               (os.POSIX_SPAWN_DUP2, output, 1), (os.POSIX_SPAWN_DUP2, errors, 2)]
    return os.posix_spawn(command[0], command, ENVIRONMENT, file_actions=actions, setpgroup=0,
                          setsigdef=[signal.SIGPIPE, signal.SIGXFSZ])


def follow(pid: int, sources: dict, deadline: float | None) -> bool:
    """Reads until the program has ended; False when the time is up."""
    ended = os.pidfd_open(pid)
    try:
        poller = select.poll()
        poller.register(ended, select.POLLIN)
        wait = SHORT_WAIT
        while not poller.poll(wait):
            wait = SHORT_WAIT if read_all(sources) > MUCH else min(2 * wait, LONG_WAIT)
            if deadline is not None and time.monotonic() > deadline:
                return False
        return True
    finally:
        os.close(ended)


def read_all(sources: dict) -> int:
    """What is there now."""
    total = 0
    for source, taker in sources.items():
        with contextlib.suppress(BlockingIOError):
            while data := os.read(source, BUFFER):
                total += len(data)
                taker(data)
    return total


def end_group(pid: int) -> int:
    with contextlib.suppress(ProcessLookupError):
        os.killpg(pid, signal.SIGKILL)
    return os.waitstatus_to_exitcode(os.waitpid(pid, 0)[1])
