"""The pages: index.html, complete in itself, and in pages/ what the pages of all assets share."""

import html
import json
import os
from urllib.parse import quote

from .asset_page import harmless
from .explanations import explain
from .reports import Settings
from .accept import counts
from .summary import is_plain_advice
from .text import write_whole
from .verdict import STATES

WEB = os.path.join(os.path.dirname(__file__), "web")
SHARED = ("style.css", "asset.css", "common.js", "charts.js", "timeline.js", "asset.js")


def store_pages(summary: dict, settings: Settings) -> None:
    found = {each["id"] for record in summary["assets"]
             for each in record["findings"] + record.get("gone", [])}
    explanations = explain(settings.quorlin, found)
    folder = os.path.join(settings.reports, "pages")
    os.makedirs(folder, exist_ok=True)
    for name in SHARED:
        write_whole(os.path.join(folder, name), read(name).encode())
    write_script(folder, "explanations", explanations)
    write_script(folder, "standing", standings(summary))
    parts = {"TITLE": html.escape(f"quorlin: {summary['root']}"),
             "STYLE": read("style.css") + read("index.css"),
             "DATA": harmless(compact(index_data(summary, explanations))),
             "SCRIPT": read("common.js") + read("index.js")}
    pieces = read("index.html").split("@")
    page = "".join(parts.get(piece, piece) for piece in pieces)
    write_whole(os.path.join(settings.reports, "index.html"), page.encode())


def read(name: str) -> str:
    with open(os.path.join(WEB, name), encoding="utf-8") as file:
        return file.read()


def compact(data: object) -> str:
    return json.dumps(data, separators=(",", ":"))


def write_script(folder: str, name: str, data: object) -> None:
    """A page that is opened from the disk may load scripts, but no data."""
    text = f"const {name.upper()} = {harmless(compact(data))};\n"
    write_whole(os.path.join(folder, name + ".js"), text.encode())


def standings(summary: dict) -> dict:
    """What only the whole batch knows of an asset: what is accepted, new and gone."""
    told = {}
    for record in summary["assets"]:
        accepted = {index: each["accepted"] for index, each in enumerate(record["findings"])
                    if "accepted" in each}
        if accepted or record.get("new") or record.get("gone"):
            told[record["asset"]] = {"state": record["state"], "reason": record["reason"],
                                     "accepted": accepted, "new": record.get("new", []),
                                     "gone": record.get("gone", [])}
    since = summary.get("since")
    return {"since": since and since["started"], "assets": told}


class Table:
    """Things that many assets share are there once."""

    def __init__(self) -> None:
        self.numbers: dict = {}

    def number(self, key: object) -> int:
        return self.numbers.setdefault(key, len(self.numbers))


def index_data(summary: dict, explanations: dict) -> dict:
    """The summary as the script of index.html takes it."""
    ids, texts = Table(), Table()
    about: dict[str, list] = {}
    for record in summary["assets"]:
        for each in record["findings"] + record.get("gone", []):
            about.setdefault(each["id"], [each["kind"], each["text"]])
    assets = [row_of(record, ids, texts, summary["root"]) for record in summary["assets"]]
    sets = [[STATES.index(each["state"]), each["reason"], [ids.number(name) for name in each["ids"]],
             each["assets"]] for each in summary["equal_findings"]]
    frequent, advice = ([[ids.number(each["id"]), each["count"], each["assets"]] for each in part]
                        for part in (summary["frequent_findings"], summary["frequent_advice"]))
    keys = ("root", "quorlin", "host", "started", "seconds", "validated_now", "interrupted",
            "problems", "notes", "totals", "since", "accepted")
    return {key: summary.get(key) for key in keys} | {
        "states": STATES, "sets": sets, "frequent": frequent, "advice": advice,
        "assets": assets,
        "ids": [[name, *about[name], explanations.get(name)] for name in ids.numbers],
        "texts": list(texts.numbers),
    }


def row_of(record: dict, ids: Table, texts: Table, root: str) -> list:
    """Name, set of findings, first finding, number of findings, seconds, report; and, when there
    are any, what is new and gone, how much is accepted, and the advice."""
    counting = [each for each in record["findings"] if counts(each)]
    total = sum(each["count"] for each in counting) + record["more_findings"]
    first = texts.number(counting[0]["text"]) if counting else -1
    usual = record["report"] == quote(f"assets{root.rstrip('/')}/{record['name']}")
    row = [record["name"], record["set"], first, total, round(record["seconds"], 3),
           0 if usual else record["report"] or ""]
    new = sorted({ids.number(name) for name in record.get("new", [])})
    gone = sorted({ids.number(each["id"]) for each in record.get("gone", [])})
    accepted = sum("accepted" in each for each in record["findings"])
    advice = sorted({ids.number(each["id"]) for each in record["findings"]
                     if is_plain_advice(each)})
    return row + ([new, gone, accepted, advice] if new or gone or accepted or advice else [])
