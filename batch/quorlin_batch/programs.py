"""The programs that a batch needs: quorlin-json and GNU parallel."""

import os
import shutil
import subprocess
import sys

from .assets import UsageError

QUORLIN = "quorlin-json"


def find_quorlin(given: str | None) -> str:
    """quorlin-json, beside what --quorlin names, as an absolute path, which holds on every host."""
    here = os.path.dirname(os.path.realpath(sys.argv[0]))
    usual = [here, os.path.join(here, "..", "build"), None]
    if given:
        if not (program := shutil.which(given)):
            raise UsageError(f"{given}: no such program")
        usual = [program if os.path.isdir(program) else os.path.dirname(os.path.abspath(program))]
    for folder in usual:
        if program := shutil.which(os.path.join(folder, QUORLIN) if folder else QUORLIN):
            return os.path.abspath(program)
    raise UsageError(f"{QUORLIN}: no such program" + (f" beside {given}" if given
                                                      else "; name its folder's quorlin with --quorlin"))


def check_parallel(jobs: str | None) -> None:
    """GNU parallel is not the only program of its name. It says what it takes for `jobs`."""
    program = shutil.which("parallel")
    if program is None or not is_gnu(program):
        raise UsageError("GNU parallel is not installed (Debian: apt-get install parallel)")
    dry_run = ("--plain", "--will-cite", "--dry-run", "--jobs", jobs, "true", ":::", "0")
    if jobs is not None and not jobs.isdigit() and ask(program, *dry_run).returncode != 0:
        raise UsageError(f"{jobs}: not a number of jobs (write 4, 50%, +2)")


def is_gnu(program: str) -> bool:
    """It is a script, and to read it takes no time; to ask it does."""
    with open(program, "rb") as file:
        if b"GNU Parallel" in file.read(1 << 16):
            return True
    return b"GNU parallel" in ask(program, "--version").stdout


def ask(*command: str) -> subprocess.CompletedProcess:
    return subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, check=False)
