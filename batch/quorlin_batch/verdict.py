"""What became of an asset: decided here alone, by how its run ended and by its events."""

import signal

from .fold import Fold
from .process import Run
from .text import duration, short

PASSED = "passed"
ACCEPTED = "accepted"  # all findings that count have been accepted
INCOMPLETE = "incomplete"  # quorlin says PASSED, but something was not validated
FAILED = "failed"
NOTHING = "nothing_validated"  # quorlin says PASSED, but there was nothing that it could validate
NO_VERDICT = "no_verdict"
NOT_RUN = "not_run"  # its run has not begun, or did not come to an end
STATES = (PASSED, ACCEPTED, INCOMPLETE, FAILED, NOTHING, NO_VERDICT, NOT_RUN)
TITLES = {PASSED: "passed", ACCEPTED: "accepted", INCOMPLETE: "passed in part", FAILED: "failed",
          NOTHING: "nothing validated", NO_VERDICT: "no verdict", NOT_RUN: "not yet run"}
EXIT_CODES = {PASSED: 0, ACCEPTED: 0, INCOMPLETE: 1, FAILED: 1, NOTHING: 2, NO_VERDICT: 2,
              NOT_RUN: 2}

REGULAR_EXIT_CODES = (0, 255)
IN_PART = "not everything could be validated"
# The disk's fault, not that of the content.
UNWRITTEN = ("output-create", "output-write", "mp4-write-nal-header", "mp4-write-start-code",
             "mp4-write-vps", "mp4-write-sps", "mp4-write-pps", "mp4-write-samples",
             "reason-mp4-output-write")


def is_retriable(run: Run) -> bool:
    """A crash and a time limit may not come again. Findings do, and so does exit code 255."""
    return run.timed_out or run.exit_code not in REGULAR_EXIT_CODES


def judge(run: Run, fold: Fold, errors: bytes) -> tuple[str, str]:
    """State and the reason for it. `errors`: what was written to standard error."""
    if run.timed_out:
        return NO_VERDICT, f"ran into the time limit of {duration(run.limit)}"
    if is_retriable(run):
        return NO_VERDICT, describe_crash(run.exit_code)
    verdict = fold.verdict
    if run.exit_code != 0 or not fold.is_readable() or not verdict or verdict["result"] is None:
        return NO_VERDICT, "ended without a verdict: " + last_words(run, fold, errors)
    if any(group.id in UNWRITTEN for group in fold.groups.values()):
        return NO_VERDICT, "the elementary streams could not be written"
    if verdict["result"] == "FAILED":
        return FAILED, ""
    if fold.segments_with_content == 0:
        return NOTHING, "no segment of it was validated"
    if any(group.unvalidated for group in fold.groups.values()):
        return INCOMPLETE, IN_PART
    return PASSED, ""


def describe_crash(exit_code: int) -> str:
    if exit_code >= 0:
        return f"crashed: exit code {exit_code}"
    try:
        return f"crashed: {signal.Signals(-exit_code).name}, {signal.strsignal(-exit_code)}"
    except ValueError:
        return f"crashed: signal {-exit_code}"


def last_words(run: Run, fold: Fold, errors: bytes) -> str:
    """Why there is no verdict, as far as anything says so."""
    for group in fold.groups.values():
        if group.fails:
            return short(group.text)
    lines = errors.decode("utf-8", "surrogateescape").strip().splitlines()
    if lines:
        return short(lines[-1])
    if not fold.is_readable():
        return "its events cannot be read"
    return f"exit code {run.exit_code}"
