"""Collects the reports of a batch into one record, and tells it on standard output."""

import json
import os
from collections import Counter
from collections.abc import Iterable
from urllib.parse import quote

from . import VERSION
from .findings import NUMBER, told
from .reports import Settings, load_result, report_folder
from .text import duration, plural, printable, write_whole
from .verdict import EXIT_CODES, NO_VERDICT, PASSED, STATES, TITLES

FORMAT = 1
MAX_FINDINGS = 100  # different ones of an asset; its result.json has more
MAX_LISTED = 20  # assets of one state on standard output
MAX_TOLD = 3  # findings of one asset there
MAX_FREQUENT = 50
NOT_RUN = {
    "state": NO_VERDICT,
    "reason": "not validated: its run did not come to an end",
    "verdict": None,
    "exit_code": None,
    "attempts": 0,
    "seconds": 0.0,
    "host": None,
    "findings": [],
    "more_findings": 0
}


def summarize(settings: Settings, assets: list[str], to_do: list[int], problems: list[str],
              seconds: float, interrupted: bool) -> dict:
    """The content of summary.json. `to_do`: the assets that this call was to validate."""
    root = common_folder(assets)
    records = [asset_record(settings, asset, root) for asset in assets]
    totals = Counter(record["state"] for record in records)
    exit_code = max((EXIT_CODES[state] for state in totals), default=0)
    return {
        "format": FORMAT,
        "program": f"quorlin-batch {VERSION}",
        "quorlin": printable(settings.version),
        "root": printable(root),
        "seconds": round(seconds, 3),
        "validated_now": sum(records[index]["report"] is not None for index in to_do),
        "interrupted": interrupted,
        "problems": [printable(problem) for problem in problems],
        "exit_code": 2 if problems or interrupted else exit_code,
        "totals": {"assets": len(records)} | {state: totals[state] for state in STATES},
        "frequent_findings": frequent_findings(records),
        "assets": records,
    }


def common_folder(assets: list[str]) -> str:
    """The folder that all assets lie in; names are shown from there on."""
    return os.path.commonpath([os.path.dirname(asset) for asset in assets]) if assets else "/"


def asset_record(settings: Settings, asset: str, root: str) -> dict:
    result = load_result(settings, asset)
    folder = os.path.relpath(report_folder(settings.reports, asset), settings.reports)
    record = {"asset": printable(asset), "name": printable(os.path.relpath(asset, root))}
    record.update({key: (result or NOT_RUN)[key] for key in NOT_RUN})
    rest = record["findings"][MAX_FINDINGS:]
    record["findings"] = record["findings"][:MAX_FINDINGS]
    record["more_findings"] += sum(finding["count"] for finding in rest
                                   if finding["level"] != "note")
    record["report"] = quote(os.fsencode(folder)) if result else None  # as a relative URL
    return record


def frequent_findings(records: list[dict]) -> list[dict]:
    """Findings of the whole catalogue; those that differ in numbers and folders only are one."""
    groups: dict[tuple[str, str], dict] = {}
    for record in records:
        folder = os.path.dirname(record["asset"]) + "/"
        seen = set()
        for finding in record["findings"]:
            if finding["level"] != "note":
                key = (finding["level"], form(finding["text"], folder))
                add_to_group(groups.setdefault(key, {}), key,
                             without_folder(finding["text"], folder))
                groups[key]["count"] += finding["count"]
                seen.add(key)
        for key in seen:
            groups[key]["assets"] += 1
    most = sorted(groups.values(), key=lambda each: (-each["assets"], -each["count"], each["form"]))
    return most[:MAX_FREQUENT]


def add_to_group(group: dict, key: tuple[str, str], text: str) -> None:
    """The group's text is that of its findings, or, when they differ, with N for their numbers."""
    if not group:
        group.update(level=key[0], text=text.strip(), form=key[1], assets=0, count=0)
    elif group["text"] != text.strip():
        group["text"] = key[1]


def without_folder(text: str, folder: str) -> str:
    """The text with its paths (not parts of them) from the folder on; `folder` ends in a slash."""
    return (" " + text).replace(" " + folder, " ")[1:] if folder != "/" else text


def form(text: str, folder: str) -> str:
    """What findings alike have in common."""
    return NUMBER.sub("N", without_folder(text, folder).strip())


def store_summary(summary: dict, path: str) -> None:
    write_whole(path, json.dumps(summary, indent=1, ensure_ascii=False).encode())


def summary_lines(summary: dict) -> Iterable[str]:
    """What a person reads when the batch has ended: what is wrong first, the numbers last."""
    totals = summary["totals"]
    interrupted = summary["interrupted"]
    shown = [each for each in summary["assets"] if each["attempts"] or not interrupted]
    for state in STATES[:0:-1]:
        yield from state_lines(state, [record for record in shown if record["state"] == state])
    if summary["frequent_findings"]:
        yield "Most frequent findings (assets, times):"
        for finding in summary["frequent_findings"][:10]:
            yield f"  {finding['assets']:6,} {finding['count']:8,}  {finding['text'].strip()}"
        yield ""
    for problem in summary["problems"]:
        yield f"PROBLEM: {problem}"
    took = f"{summary['validated_now']:,} validated in {duration(summary['seconds'])}"
    end = ", interrupted: the same call goes on from here" if interrupted else ""
    yield f"{plural(totals['assets'], 'asset')}, {took}{end}"
    for state in STATES:
        if totals[state] or state == PASSED:
            yield f"  {TITLES[state]:18} {totals[state]:7,}"


def state_lines(state: str, records: list[dict]) -> Iterable[str]:
    if not records:
        return
    yield f"{TITLES[state].upper()}:"
    for record in records[:MAX_LISTED]:
        yield f"  {record['name']}" + (f": {record['reason']}" if record["reason"] else "")
        yield from finding_lines(record)
    if len(records) > MAX_LISTED:
        yield f"  and {len(records) - MAX_LISTED:,} more"
    yield ""


def finding_lines(record: dict) -> Iterable[str]:
    """The first findings; not those that the reason quotes already."""
    rest = [each for each in record["findings"]
            if each["level"] != "note" and each["text"].strip() not in record["reason"]]
    for finding in rest[:MAX_TOLD]:
        yield f"    {finding['count']:4,} x {told(finding)}"
    if len(rest) > MAX_TOLD or record["more_findings"]:
        more = max(len(rest) - MAX_TOLD, 0) + record["more_findings"]
        yield f"           and {plural(more, 'other text')}"
