"""What a person reads on standard output when the batch has ended: what is wrong first, the numbers
last."""

import textwrap
from collections.abc import Iterable

from .accept import counts
from .text import duration, plural
from .verdict import NOT_RUN, PASSED, STATES, TITLES

MAX_LISTED = 20  # sets of equal findings of one state
MAX_TEXT = 90  # characters of a frequent finding
MAX_TOLD = 3  # findings of one set


def summary_lines(summary: dict) -> Iterable[str]:
    totals = summary["totals"]
    for state in reversed(STATES[1:-1]):
        yield from state_lines(state, [each for each in summary["assets"] if each["state"] == state])
    yield from frequent_lines("Most frequent findings", summary["frequent_findings"])
    yield from frequent_lines("Advice, no part of the verdicts", summary["frequent_advice"])
    yield from accepted_lines(summary["accepted"])
    yield from since_lines(summary["since"])
    notes = summary["notes"]
    yield from (f"NOTE: {note}" for note in notes[:MAX_LISTED])
    if len(notes) > MAX_LISTED:
        yield f"NOTE: and {plural(len(notes) - MAX_LISTED, 'more folder')}: see summary.json"
    for problem in summary["problems"]:
        yield f"PROBLEM: {problem}"
    took = f"{summary['validated_now']:,} validated in {duration(summary['seconds'])}"
    end = ", interrupted: the same call goes on from here" if summary["interrupted"] else ""
    yield f"{plural(totals['assets'], 'asset')}, {took}{end}"
    for state in STATES:
        if totals[state] or state == PASSED:
            yield f"  {TITLES[state]:18} {totals[state]:7,}"


def frequent_lines(title: str, findings: list[dict]) -> Iterable[str]:
    if not findings:
        return
    yield f"{title} (assets, times):"
    for finding in findings[:10]:
        text = textwrap.shorten(finding["text"], MAX_TEXT, placeholder=" …")
        # Of advice nothing was said above.
        where = f" (first in {finding['first_asset']})" if finding["kind"] == "advice" else ""
        yield f"  {finding['assets']:6,} {finding['count']:8,}  {finding['id']}: {text}{where}"
    yield ""


def accepted_lines(accepted: dict | None) -> Iterable[str]:
    if not accepted:
        return
    for entry in accepted["entries"]:
        if entry["problem"]:
            yield f"ACCEPT: {accepted['file']}, line {entry['line']}: {entry['id']} {entry['problem']}"
    yield f"{plural(accepted['findings'], 'accepted finding')} of {plural(accepted['assets'], 'asset')}"


def since_lines(since: dict | None) -> Iterable[str]:
    if not since:
        return
    figures = f"{since['new']:,} new, {since['gone']:,} gone, {since['same']:,} as before"
    yield f"Findings since {since['started'].replace('T', ' ').rstrip('Z')}: {figures}"
    for before, now, count in since["states"]:
        yield f"  {plural(count, 'asset')}: {TITLES[before]}, now {TITLES[now]}"


def state_lines(state: str, records: list[dict]) -> Iterable[str]:
    """The assets of one state; of those whose findings are the same, the first one."""
    if not records:
        return
    sets: dict[int, list[dict]] = {}
    for record in records:
        sets.setdefault(record["set"], []).append(record)
    yield f"{TITLES[state].upper()}:"
    for equal in list(sets.values())[:MAX_LISTED]:
        first = equal[0]
        yield f"  {first['name']}" + (f": {first['reason']}" if first["reason"] else "")
        yield from finding_lines(first)
        if len(equal) > 1:
            yield f"    the same: {plural(len(equal) - 1, 'other asset')}"
    rest = sum(map(len, list(sets.values())[MAX_LISTED:]))
    if rest:
        yield f"  and {plural(rest, 'more asset')}"
    yield ""


def finding_lines(record: dict) -> Iterable[str]:
    """The first findings; not those that the reason quotes already."""
    rest = [each for each in record["findings"]
            if counts(each) and each["text"] not in record["reason"]]
    for finding in rest[:MAX_TOLD]:
        yield f"    {finding['count']:4,} x {finding['id']}: {told(finding)}"
    if len(rest) > MAX_TOLD or record["more_findings"]:
        more = max(len(rest) - MAX_TOLD, 0)
        yield f"           and {plural(more, 'other')}" if more else "           and others"


def told(finding: dict) -> str:
    """A finding in one line."""
    place = finding["first"]
    where = place.get("segment") or place.get("file") or finding["playlist"]
    if not where or where in finding["text"]:
        return finding["text"]
    return f"{finding['text']} ({'first in' if finding['count'] > 1 else 'in'} {where})"
