"""A call: finds the assets, runs those that have no current report, and writes the summary."""

import argparse
import contextlib
import fcntl
import os
import sys
import time
from collections.abc import Iterable, Iterator

from .accept import read_entries, store_entries
from .assets import Found, UsageError, find_assets
from .engine import MAX_ASSETS, Engine
from .junit import store_junit
from .options import command_line
from .page import store_pages
from .programs import check_parallel, find_quorlin
from .reports import Settings, batch_file, is_current, is_final, load_result, remove_report
from .since import load_last, store_last
from .summary import Batch, store_summary, summarize
from .text import duration, plural, printable
from .told import summary_lines
from .verdict import NO_VERDICT, NOTHING
from .worker import version_of

EXIT_NOT_ENDED = 2  # as for every batch in which an asset reached no verdict
EXIT_USAGE = 64


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
                retry: bool) -> tuple[list[int], list[int], list[dict | None]]:
    """Numbers of the assets to validate; those of them whose old report counts no more; the results
    of the others."""
    to_do, outdated = [], []
    results: list[dict | None] = [None] * len(assets)
    for index, asset in enumerate(assets):
        result = load_result(settings, asset)
        again = result is not None and retry and result["state"] in (NO_VERDICT, NOTHING)
        if result is None or force or again or not is_current(result, asset, settings):
            outdated.append(index)
            to_do.append(index)
        elif not is_final(result):
            to_do.append(index)
        else:
            results[index] = result
    return to_do, outdated, results


def run_batch(options: argparse.Namespace) -> int:
    started = time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime())
    reports = os.path.abspath(options.output)
    streams = os.path.abspath(options.streams) if options.streams else None
    say(options, "looking for assets and their reports")
    found = find_assets(options.inputs, options.null, [reports, *([streams] if streams else [])])
    if not found.assets:
        raise UsageError("\n".join(["no playlist found in " + " ".join(options.inputs),
                                    *found.problems, *found.notes]))
    program = find_quorlin(options.quorlin)
    if (version := version_of(program)) is None:
        raise UsageError(f"{os.path.dirname(program)}/quorlin: -v prints no version")
    settings = Settings(reports, program, version, options.timeout, streams)
    if options.dry_run:
        return dry_run(settings, found, options)
    check_parallel(options.jobs)
    batch = Batch(settings, list(found.assets), started)
    batch.problems = found.problems
    batch.notes = found.notes
    batch.advice_fails = options.advice == "fail"
    if options.accept:
        batch.accept_file = options.accept
        batch.accepted = read_entries(options.accept, program)
    with locked(settings) as lock:
        return run_locked(batch, options, lock)


def dry_run(settings: Settings, found: Found, options: argparse.Namespace) -> int:
    assets = list(found.assets)
    to_do, _, _ = still_to_do(settings, assets, options.force, options.retry)
    print_lines(assets[index] for index in to_do)
    for text in found.problems + found.notes:
        print("quorlin-batch:", printable(text), file=sys.stderr)
    print(f"{plural(len(assets), 'asset')}, {len(to_do):,} to validate", file=sys.stderr)
    return EXIT_NOT_ENDED if found.problems else 0


def run_locked(batch: Batch, options: argparse.Namespace, lock: int) -> int:
    started = time.monotonic()
    settings = batch.settings
    batch.to_do, outdated, results = still_to_do(settings, batch.assets, options.force,
                                                 options.retry)
    for index in outdated:
        remove_report(settings, batch.assets[index])
    say(options, f"{plural(len(batch.assets), 'asset')}, {len(batch.to_do):,} to validate")
    progress = Progress(len(batch.to_do)) if shows_progress(options) else None
    engine = Engine(lock, options.jobs, options.sshlogin, options.sshloginfile, progress)
    if batch.to_do:
        validate(engine, batch, results)
    batch.seconds = time.monotonic() - started
    batch.last = load_last(settings)
    summary = summarize(batch, results)
    try:
        print_lines(summary_lines(summary))
    finally:  # the disk that one of them goes to may be full
        store_summary(summary, os.path.join(settings.reports, "summary.json"))
        store_junit(summary, os.path.join(settings.reports, "junit.xml"))
        store_pages(summary, settings)
        if not batch.interrupted:
            store_last(settings, summary)
        if options.write_accept:
            store_entries(summary["assets"], options.write_accept, batch.started[:10])
    print_lines(["The page to read: " + os.path.join(options.output, "index.html")])
    return summary["exit_code"]


def validate(engine: Engine, batch: Batch, results: list[dict | None]) -> None:
    """Runs what is to do, and loads its results. What workers that were lost have left is tried a
    second time, each asset for itself: one of them may be the reason."""
    left = batch.to_do
    for largest in (MAX_ASSETS, 1):
        forget_refusals(batch.settings)
        batch.interrupted = not engine.run(batch.settings, [batch.assets[each] for each in left],
                                           largest)
        batch.refused = refusals(batch.settings)
        for index in left:
            results[index] = load_result(batch.settings, batch.assets[index])
        missing = [index for index in left if results[index] is None]
        if batch.interrupted or len(missing) in (0, len(left)):
            break
        left = missing


def refusals(settings: Settings) -> list[str]:
    """What workers wrote on hosts with another version."""
    folder = batch_file(settings.reports, "")
    texts = []
    for name in sorted(os.listdir(folder)):
        if name.startswith("refused-"):
            with open(os.path.join(folder, name), encoding="utf-8") as file:
                texts.append(file.read())
    return texts


def forget_refusals(settings: Settings) -> None:
    folder = batch_file(settings.reports, "")
    for name in os.listdir(folder):
        if name.startswith("refused-"):
            os.remove(os.path.join(folder, name))


class Progress:
    """A line on the terminal, told at most ten times a second."""

    def __init__(self, total: int):
        self.total = total
        self.started = self.told = time.monotonic()

    def __call__(self, done: int) -> None:
        now = time.monotonic()
        if done < self.total and now - self.told < 0.1:
            return
        self.told = now
        left = (now - self.started) / max(done, 1) * (self.total - done)
        end = "\n" if done >= self.total else f", about {duration(left)} left"
        print(f"\r\033[Kquorlin-batch: {done:,} of {self.total:,} validated{end}", end="",
              file=sys.stderr, flush=True)


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
        import traceback
        traceback.print_exc()
    return EXIT_NOT_ENDED
