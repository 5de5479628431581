"""Collects the results of a batch into one record."""

import json
import os
from collections import Counter
from collections.abc import Callable
from urllib.parse import quote

from . import VERSION
from .accept import Entry, accept, counts, described, judge_again
from .reports import Settings, report_folder
from .since import compare
from .text import printable, write_whole
from .verdict import EXIT_CODES, NOT_RUN, STATES

FORMAT = 2
MAX_FINDINGS = 100  # of an asset; its result.json has more
MAX_FREQUENT = 50
# Of an asset without a report.
NO_RESULT = {
    "state": NOT_RUN, "reason": "", "verdict": None, "exit_code": None, "attempts": 0,
    "started": None, "seconds": 0.0, "host": None, "more_findings": 0, "playlists": [],
    "inventory": [], "findings": []
}


class Batch:
    """One call: what it was to do, and how it went."""

    def __init__(self, settings: Settings, assets: list[str], started: str):
        self.settings = settings
        self.assets = assets
        self.started = started  # date and time, UTC
        self.seconds = 0.0
        self.to_do: list[int] = []  # numbers of the assets that it was to validate
        self.interrupted = False
        self.problems: list[str] = []  # what could not be searched
        self.notes: list[str] = []  # what was passed over on purpose
        self.refused: list[str] = []  # hosts with another version
        self.accepted: list[Entry] = []
        self.accept_file = ""
        self.advice_fails = False
        self.last: dict | None = None  # what the call before found


def summarize(batch: Batch, results: list[dict | None]) -> dict:
    """The content of summary.json."""
    root = common_folder(batch.assets)
    records = [record_of(batch, asset, root, result)
               for asset, result in zip(batch.assets, results)]
    since = compare(batch.last, records) if batch.last else None
    totals = Counter(record["state"] for record in records)
    exit_code = max((EXIT_CODES[state] for state in totals), default=0)
    return {
        "format": FORMAT,
        "program": f"quorlin-batch {VERSION}",
        "quorlin": batch.settings.version,
        "host": os.uname().nodename,
        "started": batch.started,
        "root": printable(root),
        "seconds": round(batch.seconds, 3),
        "validated_now": sum(results[index] is not None for index in batch.to_do),
        "interrupted": batch.interrupted,
        "problems": [printable(problem) for problem in batch.problems + batch.refused],
        "notes": [printable(note) for note in batch.notes],
        "exit_code": 2 if batch.problems or batch.interrupted else exit_code,
        "totals": {"assets": len(records)} | {state: totals[state] for state in STATES},
        "advice": "fail" if batch.advice_fails else "show",
        "accepted": described(batch.accepted, batch.accept_file, records) if batch.accept_file else None,
        "since": since,
        "frequent_findings": frequent_findings(records, counts),
        "frequent_advice": frequent_findings(records, is_plain_advice),
        "equal_findings": equal_findings(records),
        "assets": records,
    }


def common_folder(assets: list[str]) -> str:
    """The folder that all assets lie in; names are shown from there on."""
    return os.path.commonpath([os.path.dirname(asset) for asset in assets]) if assets else "/"


def record_of(batch: Batch, asset: str, root: str, result: dict | None) -> dict:
    name = asset[len(root):].lstrip("/") if asset.startswith(root) else asset
    record = {"asset": printable(asset), "name": printable(name)}
    record.update({key: (result or NO_RESULT)[key] for key in NO_RESULT})
    if result:
        if batch.advice_fails:
            for each in record["findings"]:
                each["fails"] |= each["kind"] == "advice"
        accept(batch.accepted, record)
        more_fails = result["more_fails"]
        record["state"], record["reason"] = judge_again(record, more_fails)
    findings = record["findings"]
    if len(findings) > MAX_FINDINGS:
        record["more_findings"] += sum(each["count"] for each in findings[MAX_FINDINGS:])
        record["findings"] = findings[:MAX_FINDINGS]
    folder = report_folder("", asset) if result else None
    record["report"] = folder and quote(os.fsencode(folder))  # a relative URL
    return record


def is_plain_advice(finding: dict) -> bool:
    return finding["kind"] == "advice" and not finding["fails"] and "accepted" not in finding


def frequent_findings(records: list[dict], test: Callable[[dict], bool]) -> list[dict]:
    """Findings of the whole catalogue by their ids, the most frequent first."""
    groups: dict[str, dict] = {}
    for record in records:
        seen = set()
        for finding in record["findings"]:
            if not test(finding):
                continue
            name = finding["id"]
            group = groups.get(name)
            if group is None:
                group = groups[name] = {"id": name, "kind": finding["kind"],
                                        "text": finding["text"], "first_asset": record["name"],
                                        "assets": 0, "count": 0}
            group["count"] += finding["count"]
            if name not in seen:
                seen.add(name)
                group["assets"] += 1
    most = sorted(groups.values(), key=lambda each: (-each["assets"], -each["count"], each["id"]))
    return most[:MAX_FREQUENT]


def equal_findings(records: list[dict]) -> list[dict]:
    """Assets whose verdicts and findings are the same but for counts and places. Gives each record
    the number of its set."""
    sets: dict[tuple, dict] = {}
    for record in records:
        ids = tuple(sorted({each["id"] for each in record["findings"] if counts(each)}))
        key = (record["state"], record["reason"], ids)
        group = sets.get(key)
        if group is None:
            group = sets[key] = {"state": key[0], "reason": key[1], "ids": list(ids), "assets": 0,
                                 "number": len(sets)}
        group["assets"] += 1
        record["set"] = group["number"]
    return list(sets.values())


def store_summary(summary: dict, path: str) -> None:
    """One line for each asset."""
    head = json.dumps({key: value for key, value in summary.items() if key != "assets"}, indent=1)
    lines = ",\n".join(json.dumps(record) for record in summary["assets"])
    write_whole(path, (head[:-2] + ',\n "assets": [\n' + lines + "\n]}\n").encode())
