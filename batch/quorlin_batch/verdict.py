"""What became of an asset: decided here alone, by how its run ended and what that printed."""

import signal
from dataclasses import dataclass

from .findings import Output
from .reports import Look
from .text import duration

PASSED = "passed"
INCOMPLETE = "incomplete"  # quorlin says PASSED, but something was not validated
FAILED = "failed"
NOTHING = "nothing_validated"  # quorlin says PASSED, but there was nothing that it could validate
NO_VERDICT = "no_verdict"
STATES = (PASSED, INCOMPLETE, FAILED, NOTHING, NO_VERDICT)
TITLES = {PASSED: "passed", INCOMPLETE: "passed in part", FAILED: "failed",
          NOTHING: "nothing validated", NO_VERDICT: "no verdict"}
EXIT_CODES = {PASSED: 0, INCOMPLETE: 1, FAILED: 1, NOTHING: 2, NO_VERDICT: 2}

REGULAR_EXIT_CODES = (0, 255)


@dataclass
class Run:
    """How one run of quorlin ended. A negative exit code is the signal that ended it."""
    exit_code: int
    timed_out: bool
    seconds: float
    limit: float

    def retriable(self) -> bool:
        """A crash and a time limit may not come again. Findings do, and so does exit code 255."""
        return self.timed_out or self.exit_code not in REGULAR_EXIT_CODES


def judge(run: Run, output: Output, look: Look) -> tuple[str, str]:
    """State and the reason for it."""
    if run.timed_out:
        return NO_VERDICT, f"ran into the time limit of {duration(run.limit)}"
    if run.retriable():
        return NO_VERDICT, describe_crash(run.exit_code)
    if run.exit_code != 0 or output.verdict is None:
        said = output.first() or f"exit code {run.exit_code}"
        return NO_VERDICT, f"ended without a verdict: {said}"
    if output.unwritten:
        return NO_VERDICT, "the elementary streams could not be written"
    if output.verdict == "FAILED":
        return FAILED, ""
    # Two witnesses: what quorlin says that it skipped, and what is on the disk.
    unread = look.is_playlist and output.verified <= len(output.empty_playlists)
    if unread or look.segments == 0 or output.skipped_segments >= look.named:
        return NOTHING, "no segment of it was validated"
    if output.incomplete:
        return INCOMPLETE, "not everything could be validated"
    return PASSED, ""


def describe_crash(exit_code: int) -> str:
    if exit_code >= 0:
        return f"crashed: exit code {exit_code}"
    try:
        return f"crashed: {signal.Signals(-exit_code).name}, {signal.strsignal(-exit_code)}"
    except ValueError:
        return f"crashed: signal {-exit_code}"
