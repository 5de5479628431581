"""junit.xml: one test case an asset, for the systems that show test results."""

import html
import re

from .accept import counts
from .text import plural, write_whole
from .told import told
from .verdict import ACCEPTED, FAILED, INCOMPLETE, PASSED

NO_XML = re.compile("[\ud800-\udfff\ufffe\uffff]")


def store_junit(summary: dict, path: str) -> None:
    totals = summary["totals"]
    failures = totals[FAILED] + totals[INCOMPLETE]
    good = totals[PASSED] + totals[ACCEPTED]
    seconds = sum(record["seconds"] for record in summary["assets"])
    figures = {"tests": totals["assets"], "failures": failures,
               "errors": totals["assets"] - good - failures, "time": f"{seconds:.3f}"}
    suite = {"name": "quorlin", "timestamp": summary["started"].rstrip("Z"),
             "hostname": summary["host"], "skipped": 0, **figures}
    properties = {"quorlin": summary["quorlin"], "quorlin-batch": summary["program"]}
    lines = ['<?xml version="1.0" encoding="utf-8"?>', tag("testsuites", figures),
             tag("testsuite", suite), *property_lines(properties)]
    for record in summary["assets"]:
        lines += case_lines(record)
    # What is read on another machine knows nothing of the folders of this one.
    content = "\n".join([*lines, "</testsuite>", "</testsuites>", ""])
    root = escape(summary["root"].rstrip("/") + "/")
    write_whole(path, (content.replace(root, "") if root != "/" else content).encode())


def tag(name: str, attributes: dict, end: str = "") -> str:
    pairs = "".join(f' {key}="{escape(str(value))}"' for key, value in attributes.items())
    return f"<{name}{pairs}{end}>"


def escape(text: str) -> str:
    return NO_XML.sub("\ufffd", html.escape(text)).replace("\n", "&#10;")


def property_lines(properties: dict) -> list[str]:
    lines = [tag("property", {"name": name, "value": value}, "/")
             for name, value in properties.items()]
    return ["<properties>", *lines, "</properties>"]


def case_lines(record: dict) -> list[str]:
    folder, _, name = record["name"].rpartition("/")
    case = tag("testcase", {"classname": folder or ".", "name": name,
                            "time": f"{record['seconds']:.3f}"})
    lines = [case, *property_lines(properties_of(record))]
    if record["state"] in (PASSED, ACCEPTED):
        if record["findings"]:
            lines.append(f"<system-out>{escape(folded(record))}</system-out>")
    else:
        kind = "failure" if record["state"] in (FAILED, INCOMPLETE) else "error"
        about = {"type": record["state"], "message": message_of(record)}
        lines.append(tag(kind, about) + escape(folded(record)) + f"</{kind}>")
    return [*lines, "</testcase>"]


def properties_of(record: dict) -> dict:
    known = {"verdict": record["verdict"], "attempts": record["attempts"],
             "started": record["started"], "host": record["host"], "report": record["report"]}
    return {key: value for key, value in known.items() if value is not None}


def message_of(record: dict) -> str:
    """The first finding, or what became of the run."""
    first = next((told(each) for each in record["findings"] if counts(each)), None)
    if record["state"] == FAILED or (record["state"] == INCOMPLETE and first):
        return first or "failed"
    return record["reason"] or record["state"].replace("_", " ")


def folded(record: dict) -> str:
    """The findings of an asset, each once, with its count."""
    lines = [f"{each['count']} x {each['id']}: {told(each)}" for each in record["findings"]]
    if record["more_findings"]:
        lines.append(f"and {plural(record['more_findings'], 'other finding')}")
    if record["report"]:
        lines.append(f"report: {record['report']}/index.html")
    return "\n".join(lines)
