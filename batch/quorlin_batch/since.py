"""Since last time: what a call found that the call before, into the same folder, did not; and what
is gone."""

import json
from collections import Counter

from .reports import Settings, batch_file
from .text import write_whole
from .verdict import NO_VERDICT, NOT_RUN

KEPT = ("id", "kind", "text", "fails", "unvalidated")


def is_compared(finding: dict) -> bool:
    return finding["fails"] or finding["unvalidated"] or finding["kind"] == "advice"


def load_last(settings: Settings) -> dict | None:
    """What the last call that came to its end found."""
    try:
        with open(batch_file(settings.reports, "last.json"), encoding="utf-8") as file:
            last = json.load(file)
        return last if isinstance(last["assets"], dict) and last["started"] else None
    except (OSError, ValueError, KeyError, TypeError):
        return None


def store_last(settings: Settings, summary: dict) -> None:
    assets = {record["asset"]: {
        "state": record["state"],
        "findings": {each["id"]: [each[key] for key in KEPT[1:]] for each in record["findings"]
                     if is_compared(each)}
    } for record in summary["assets"]}
    content = json.dumps({"started": summary["started"], "assets": assets}, separators=(",", ":"))
    write_whole(batch_file(settings.reports, "last.json"), content.encode())


def compare(last: dict, records: list[dict]) -> dict:
    """Notes in each record what is new and what is gone; the figures of the whole catalogue. Of an
    asset without a verdict nobody knows what is gone."""
    changes: Counter[tuple[str, str]] = Counter()
    figures = Counter()
    for record in records:
        before = last["assets"].get(record["asset"])
        record["before"] = before and before["state"]
        if not before:
            figures["added"] += record["state"] != NOT_RUN
            continue
        if record["state"] == NOT_RUN:
            continue
        now = {each["id"] for each in record["findings"] if is_compared(each)}
        then = before["findings"]
        record["new"] = sorted(now - then.keys())
        if record["state"] != NO_VERDICT:
            record["gone"] = [dict(zip(KEPT, [name, *then[name]]))
                              for name in sorted(then.keys() - now)]
        figures.update(new=len(record["new"]), gone=len(record.get("gone", [])),
                       same=len(now & then.keys()))
        if before["state"] != record["state"]:
            changes[before["state"], record["state"]] += 1
    known = {record["asset"] for record in records}
    return {"started": last["started"]} | {key: figures[key] for key in ("new", "gone", "same",
                                                                       "added")} | {
        "removed": sum(asset not in known for asset in last["assets"]),
        "states": [[*states, count] for states, count in sorted(changes.items())]}
