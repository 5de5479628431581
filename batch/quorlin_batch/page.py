"""index.html: one page, complete in itself; the summary is in it as JSON nothing breaks out of."""

import html
import json
import os

from .summary import form, without_folder
from .text import write_whole
from .verdict import STATES, TITLES

TEMPLATE = os.path.join(os.path.dirname(__file__), "page.html")
MAX_TEXTS = 50  # different findings an asset shows on the page; its report has all


def store_page(summary: dict, path: str) -> None:
    with open(TEMPLATE, encoding="utf-8") as file:
        template = file.read()
    head, middle, tail = split_template(template)
    title = html.escape(f"quorlin: {summary['root']}")
    write_whole(path, "".join((head, title, middle, embed(page_data(summary)), tail)).encode())


def split_template(template: str) -> tuple[str, str, str]:
    head, rest = template.split("@TITLE@", 1)
    middle, tail = rest.split("@DATA@", 1)
    return head, middle, tail


def embed(data: object) -> str:
    """JSON in ASCII without the characters that mean something to HTML."""
    text = json.dumps(data, separators=(",", ":"))
    return text.replace("&", "\\u0026").replace("<", "\\u003c").replace(">", "\\u003e")


def page_data(summary: dict) -> dict:
    """The summary as the page's script takes it: texts that many assets share are there once."""
    frequent = {(finding["level"], finding["form"]): index
                for index, finding in enumerate(summary["frequent_findings"])}
    numbers: dict[tuple[str, str, int], int] = {}

    def entry(finding: dict, folder: str) -> list:
        level, text = finding["level"], finding["text"]
        key = (level, shortened(text.strip()), frequent.get((level, form(text, folder)), -1))
        place = [shortened(finding["place"])] if "place" in finding else []
        return [numbers.setdefault(key, len(numbers)), finding["count"], *place]

    def shortened(text: str) -> str:
        return without_folder(text, summary["root"].rstrip("/") + "/")

    assets = []
    for record in summary["assets"]:
        folder = os.path.dirname(record["asset"]) + "/"
        shown = record["findings"][:MAX_TEXTS]
        rest = [each for each in record["findings"][MAX_TEXTS:] if each["level"] != "note"]
        more = record["more_findings"] + sum(each["count"] for each in rest)
        assets.append([record["name"], STATES.index(record["state"]), record["reason"],
                       record["report"] or "", record["seconds"], record["attempts"],
                       record["host"] or "", [entry(each, folder) for each in shown], more])
    keys = ("root", "quorlin", "seconds", "validated_now", "interrupted", "problems", "totals",
            "frequent_findings")
    return {key: summary[key] for key in keys} | {
        "states": [[state, TITLES[state]] for state in STATES],
        "texts": [list(key) for key in numbers],
        "assets": assets
    }
