"""junit.xml: one test case an asset, for the systems that show test results."""

import io
from xml.etree import ElementTree

from .findings import told
from .text import plural, write_whole
from .verdict import FAILED, INCOMPLETE, PASSED


def store_junit(summary: dict, path: str) -> None:
    totals = summary["totals"]
    failures = totals[FAILED] + totals[INCOMPLETE]
    counts = {
        "tests": str(totals["assets"]),
        "failures": str(failures),
        "errors": str(totals["assets"] - totals[PASSED] - failures),
        "time": f"{sum(record['seconds'] for record in summary['assets']):.3f}"
    }
    top = ElementTree.Element("testsuites", counts)
    suite = ElementTree.SubElement(top, "testsuite", {"name": "quorlin", "skipped": "0", **counts})
    for record in summary["assets"]:
        add_case(suite, record)
    ElementTree.indent(top)
    content = io.BytesIO()
    ElementTree.ElementTree(top).write(content, encoding="utf-8", xml_declaration=True)
    write_whole(path, content.getvalue())


def add_case(suite: ElementTree.Element, record: dict) -> None:
    folder, _, name = record["name"].rpartition("/")
    names = {"classname": folder or ".", "name": name, "time": f"{record['seconds']:.3f}"}
    case = ElementTree.SubElement(suite, "testcase", names)
    if record["state"] == PASSED:
        if record["findings"]:
            ElementTree.SubElement(case, "system-out").text = folded(record)
        return
    kind = "failure" if record["state"] in (FAILED, INCOMPLETE) else "error"
    texts = len(record["findings"])
    message = record["reason"] or f"{plural(texts, 'different finding')}"
    about = {"type": record["state"], "message": message}
    ElementTree.SubElement(case, kind, about).text = folded(record)


def folded(record: dict) -> str:
    """The findings of an asset, each text once behind its count."""
    lines = [f"{finding['count']} x {told(finding)}" for finding in record["findings"]]
    if record["more_findings"]:
        lines.append(f"and {plural(record['more_findings'], 'line')} with other texts")
    return "\n".join(lines)
