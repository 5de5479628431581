"""The command line: what is to be validated, what of it is still to do, the run, the summary."""

import argparse
import contextlib
import fcntl
import os
import re
import shutil
import subprocess
import sys
import time
import traceback
from collections.abc import Iterable, Iterator

from . import VERSION
from .assets import Found, UsageError, find_assets
from .engine import Engine, run_jobs
from .junit import store_junit
from .page import store_page
from .reports import Settings, batch_file, is_current, is_final, load_result, remove_report
from .summary import store_summary, summarize, summary_lines
from .text import plural, printable
from .verdict import NO_VERDICT, NOTHING

EXIT_NOT_ENDED = 2  # as for every batch in which an asset reached no verdict
EXIT_USAGE = 64
TIME_UNITS = {"": 1, "s": 1, "m": 60, "h": 3600, "d": 86400}

DESCRIPTION = """\
Validates a catalogue of HLS assets with quorlin, many at a time, and writes a
report for each and a page over all of them."""

EPILOG = """\
What is validated:
  FOLDER    every master playlist below it, and every media playlist that no
            master playlist there names
  PLAYLIST  that playlist; also a .ts file or a numbered series (seg_%04d.ts)
  LIST      the paths in a text file, one a line; empty lines and lines that
            begin with # are left out, blanks belong to the name; - reads
            standard input

A second call with the same reports folder goes on where the first one ended:
only what has no report, or whose files, quorlin or time limit have changed,
is validated. A crash or a time limit is tried a second time; findings and
exit code 255 stand.

In the reports folder:
  index.html     the page to read (no network, no server needed)
  summary.json   the same for programs; junit.xml for CI systems
  assets/...     report.txt, stderr.txt and result.json of each asset

Exit code: 0 all passed, 1 findings, 2 some asset reached no verdict,
64 the batch could not begin.

Examples:
  quorlin-batch /srv/catalogue -o reports
  quorlin-batch tonight.txt -o reports --jobs 8 --timeout 2h
  quorlin-batch /srv/catalogue -o /srv/reports --sshlogin host1,host2,:
  find . -name master.m3u8 -print0 | quorlin-batch -0 - -o reports
"""


def parse_time(text: str) -> float:
    """Seconds of a time like 90, 90s, 15m, 2h or 1.5d."""
    if not (found := re.fullmatch(r"(\d{1,9}(?:\.\d+)?)([smhd]?)", text)):
        raise argparse.ArgumentTypeError(f"not a time: {text} (write 90, 15m, 2h)")
    return float(found[1]) * TIME_UNITS[found[2]]


def folder_name(text: str) -> str:
    """An empty one (of a variable that is not set) would be the current folder."""
    if not text:
        raise argparse.ArgumentTypeError("the name of the folder is empty")
    return text


class Parser(argparse.ArgumentParser):
    def error(self, message: str) -> None:
        raise UsageError(f"{message}\nTry 'quorlin-batch --help' for more information.")


def command_line() -> argparse.ArgumentParser:
    parser = Parser(prog="quorlin-batch",
                    description=DESCRIPTION,
                    epilog=EPILOG,
                    allow_abbrev=False,
                    usage="quorlin-batch [OPTION]... FOLDER|LIST|PLAYLIST... -o REPORTS",
                    formatter_class=argparse.RawDescriptionHelpFormatter)
    add = parser.add_argument
    add("inputs", nargs="+", metavar="FOLDER|LIST|PLAYLIST", help=argparse.SUPPRESS)
    add("-o", "--output", metavar="REPORTS", required=True, type=folder_name,
        help="folder of the reports; made when it is missing")
    add("-j", "--jobs", metavar="N",
        help="runs at a time on each host, as GNU parallel takes it: 4, 50%%, +2 (one for each "
        "CPU thread)")
    add("-t", "--timeout", metavar="TIME", type=parse_time, default="1h",
        help="time limit of one run: 90, 15m, 2h; 0 for none (1h)")
    add("-S", "--sshlogin", metavar="HOSTS", action="append", default=[],
        help="run on these hosts, as GNU parallel takes them; they see the same files under the "
        "same paths, quorlin and quorlin-batch included")
    add("--sshloginfile", metavar="FILE", action="append", default=[],
        help="the hosts, one a line")
    add("--streams", metavar="FOLDER", type=folder_name,
        help="keep the elementary streams there (they are not written otherwise)")
    add("--quorlin", metavar="PROGRAM",
        help="the quorlin to run (that beside quorlin-batch, or in PATH)")
    add("-f", "--force", action="store_true", help="validate everything again")
    add("-r", "--retry", action="store_true", help="validate again what reached no verdict")
    add("-0", "--null", action="store_true",
        help="names in lists end with a zero byte, not with a line")
    add("-n", "--dry-run", action="store_true", help="print what would be validated, and end")
    add("-q", "--quiet", action="store_true", help="no progress bar on standard error")
    add("-V", "--version", action="version", version=f"quorlin-batch {VERSION}")
    return parser


def find_quorlin(given: str | None) -> str:
    """The program as an absolute path, which holds on every host."""
    here = os.path.dirname(os.path.realpath(sys.argv[0]))
    usual = [os.path.join(here, "quorlin"), os.path.join(here, "..", "build", "quorlin"), "quorlin"]
    for candidate in [given] if given else usual:
        if program := shutil.which(candidate):
            return os.path.abspath(program)
    raise UsageError(f"{given or 'quorlin'}: no such program" +
                     ("" if given else "; name it with --quorlin"))


def check_parallel(jobs: str | None) -> None:
    """GNU parallel is not the only program of its name. It says what it takes for `jobs`."""
    program = shutil.which("parallel")
    if program is None or b"GNU parallel" not in ask(program, "--version").stdout:
        raise UsageError("GNU parallel is not installed (Debian: apt-get install parallel)")
    dry_run = ("--plain", "--will-cite", "--dry-run", "--jobs", jobs, "true", ":::", "0")
    if jobs is not None and ask(program, *dry_run).returncode != 0:
        raise UsageError(f"{jobs}: not a number of jobs (write 4, 50%, +2)")


def ask(*command: str) -> subprocess.CompletedProcess:
    return subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, check=False)


def quorlin_version(program: str) -> str:
    try:
        done = ask(program, "-v")
    except OSError as error:
        raise UsageError(f"{program}: cannot be run: {error.strerror}") from error
    if done.returncode != 0 or not done.stdout.strip():
        raise UsageError(f"{program}: is no quorlin: -v prints no version")
    lines = done.stdout.decode("utf-8", "replace").replace("*", " ").splitlines()
    return ", ".join(line.strip() for line in lines if line.strip())


@contextlib.contextmanager
def locked(settings: Settings) -> Iterator[int]:
    """The reports folder, ready and for this batch alone; what locks it."""
    try:
        os.makedirs(batch_file(settings.reports, ""), exist_ok=True)
        file = open(batch_file(settings.reports, "lock"), "w", encoding="utf-8")
    except OSError as error:
        raise UsageError(f"{settings.reports}: cannot be written: {error.strerror}") from error
    with file:
        try:
            fcntl.flock(file, fcntl.LOCK_EX | fcntl.LOCK_NB)
        except BlockingIOError as error:
            raise UsageError(
                f"{settings.reports}: another quorlin-batch is at work in this folder") from error
        yield file.fileno()


def still_to_do(settings: Settings, assets: list[str], force: bool,
                retry: bool) -> tuple[list[int], list[int]]:
    """Numbers of the assets to validate; and those of them whose old report counts no more."""
    to_do, outdated = [], []
    for index, asset in enumerate(assets):
        result = load_result(settings, asset)
        again = result is not None and retry and result["state"] in (NO_VERDICT, NOTHING)
        if result is None or force or again or not is_current(result, asset, settings):
            outdated.append(index)
            to_do.append(index)
        elif not is_final(result):
            to_do.append(index)
    return to_do, outdated


def run_batch(options: argparse.Namespace) -> int:
    reports = os.path.abspath(options.output)
    streams = os.path.abspath(options.streams) if options.streams else None
    say(options, "looking for assets and their reports")
    found = find_assets(options.inputs, options.null, [reports, *([streams] if streams else [])])
    assets = list(found.assets)
    if not assets:
        raise UsageError("\n".join(["no playlist found in " + " ".join(options.inputs),
                                    *found.problems]))
    program = find_quorlin(options.quorlin)
    settings = Settings(reports, program, quorlin_version(program), options.timeout, streams)
    if options.dry_run:
        return dry_run(settings, found, options)
    check_parallel(options.jobs)
    with locked(settings) as lock:
        return run_locked(settings, assets, found.problems, options, lock)


def dry_run(settings: Settings, found: Found, options: argparse.Namespace) -> int:
    assets = list(found.assets)
    to_do, _ = still_to_do(settings, assets, options.force, options.retry)
    print_lines(assets[index] for index in to_do)
    for problem in found.problems:
        print("quorlin-batch:", printable(problem), file=sys.stderr)
    print(f"{plural(len(assets), 'asset')}, {len(to_do):,} to validate", file=sys.stderr)
    return EXIT_NOT_ENDED if found.problems else 0


def run_locked(settings: Settings, assets: list[str], problems: list[str],
               options: argparse.Namespace, lock: int) -> int:
    started = time.monotonic()
    to_do, outdated = still_to_do(settings, assets, options.force, options.retry)
    for index in outdated:
        remove_report(settings, assets[index])
    say(options, f"{plural(len(assets), 'asset')}, {len(to_do):,} to validate")
    engine = Engine(lock, options.jobs, options.sshlogin, options.sshloginfile,
                    shows_progress(options))
    finished = run_jobs(engine, settings, assets, to_do) if to_do else True
    summary = summarize(settings, assets, to_do, problems, time.monotonic() - started, not finished)
    try:
        print_lines(summary_lines(summary))
    finally:  # the disk that one of them goes to may be full
        store_summary(summary, os.path.join(settings.reports, "summary.json"))
        store_junit(summary, os.path.join(settings.reports, "junit.xml"))
        store_page(summary, os.path.join(settings.reports, "index.html"))
    print_lines(["The page to read: " + os.path.join(options.output, "index.html")])
    return summary["exit_code"]


def print_lines(lines: Iterable[str]) -> None:
    """On standard output; that its reader has gone does not change how the batch ended."""
    try:
        print("\n".join(map(printable, lines)), flush=True)
    except BrokenPipeError:
        os.dup2(os.open(os.devnull, os.O_WRONLY), sys.stdout.fileno())


def shows_progress(options: argparse.Namespace) -> bool:
    return sys.stderr.isatty() and not options.quiet


def say(options: argparse.Namespace, text: str) -> None:
    if shows_progress(options):
        print(f"quorlin-batch: {text}", file=sys.stderr)


def main(arguments: list[str]) -> int:
    sys.stdout = sys.stdout or open(os.devnull, "w", encoding="utf-8")  # closed at the start
    sys.stderr = sys.stderr or open(os.devnull, "w", encoding="utf-8")
    sys.stdout.reconfigure(errors="backslashreplace")
    try:
        return run_batch(command_line().parse_args(arguments))
    except UsageError as error:
        print("quorlin-batch:", "\n".join(map(printable, str(error).split("\n"))), file=sys.stderr)
        return EXIT_USAGE
    except OSError as error:
        print("quorlin-batch:", printable(str(error)), file=sys.stderr)
    except KeyboardInterrupt:
        print("quorlin-batch: interrupted; the same call goes on from here", file=sys.stderr)
    except Exception:  # Python's own exit code would say that all assets have a verdict
        traceback.print_exc()
    return EXIT_NOT_ENDED
