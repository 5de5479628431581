"""Accepted findings: what a catalogue is known for and may keep."""

import re
import subprocess
from collections.abc import Iterable
from datetime import date
from fnmatch import fnmatchcase

from .advice_texts import EXPLANATIONS
from .assets import UsageError
from .text import printable, write_whole
from .verdict import ACCEPTED, FAILED, INCOMPLETE, IN_PART, PASSED

LINE = re.compile(r'(?P<id>[^\s#]+)(?P<rest>(?:\s+(?:"[^"]*"|[^\s#"]\S*))*)\s*(?:#\s*(?P<why>.*))?')
WORD = re.compile(r'"([^"]*)"|(\S+)')
ID = re.compile(r"[a-z0-9]+(?:-[a-z0-9]+)+")
RULES_ACCEPTED = "all rules that it stands for are accepted"


class Entry:
    """A line of the file."""

    def __init__(self, line: int, name: str, assets: str | None, until: date | None, why: str):
        self.line, self.id, self.assets, self.until, self.why = line, name, assets, until, why
        self.matched = 0  # assets

    def is_out_of_date(self) -> bool:
        return self.until is not None and date.today() > self.until

    def covers(self, record: dict) -> bool:
        return self.assets is None or any(fnmatchcase(record[key], self.assets)
                                          for key in ("name", "asset"))


def read_entries(path: str, program: str) -> list[Entry]:
    """Of a file of --accept. An id that there is not is an error."""
    try:
        with open(path, encoding="utf-8") as file:
            lines = file.read().split("\n")
    except (OSError, ValueError) as error:
        raise UsageError(f"{path}: cannot be read: {error}") from error
    entries = [parse(path, number, line.strip()) for number, line in enumerate(lines, 1)
               if line.strip() and not line.strip().startswith("#")]
    known = known_ids(program) if entries else set()
    for entry in entries:
        if entry.id not in known:
            raise UsageError(f"{path}, line {entry.line}: there is no finding {entry.id}")
    return entries


def parse(path: str, number: int, line: str) -> Entry:
    found = LINE.fullmatch(line)
    if not found:
        raise UsageError(f'{path}, line {number}: not ID ["ASSETS"] [until=DATE] [# WHY]')
    assets = until = None
    for quoted, word in WORD.findall(found["rest"]):
        if word.startswith("until="):
            try:
                until = date.fromisoformat(word.removeprefix("until="))
            except ValueError as error:
                raise UsageError(f"{path}, line {number}: no date: {word}") from error
        elif assets is None:
            assets = quoted or word
        else:
            raise UsageError(f"{path}, line {number}: more than one pattern of assets")
    return Entry(number, found["id"], assets, until, (found["why"] or "").strip())


def known_ids(program: str) -> set[str]:
    done = subprocess.run([program, "--ids"], stdin=subprocess.DEVNULL, capture_output=True,
                          check=False)
    words = (line.split() for line in done.stdout.decode("utf-8", "replace").split("\n"))
    return {each[0] for each in words if each and ID.fullmatch(each[0])} | EXPLANATIONS.keys()


def accept(entries: list[Entry], record: dict) -> None:
    """Marks the findings of an asset that are accepted, with the reason why."""
    whys: dict[str, str] = {}
    found = {each["id"] for each in record["findings"]}
    for entry in entries:
        if entry.id in found and not entry.is_out_of_date() and entry.covers(record):
            entry.matched += 1
            whys.setdefault(entry.id, entry.why)
    for finding in record["findings"]:
        why = why_accepted(finding, whys)
        if why is not None:
            finding["accepted"] = why


def why_accepted(finding: dict, whys: dict[str, str]) -> str | None:
    """The line of the container after numbered rules is accepted exactly when they all are."""
    sets = finding.get("rules", [])
    own = whys.get(finding["id"])
    if any(sets):
        accepted = all(set(rules) <= whys.keys() if rules else own is not None for rules in sets)
        return RULES_ACCEPTED if accepted else None
    return own


def counts(finding: dict) -> bool:
    """It fails the asset or left something out, and it is not accepted."""
    return (finding["fails"] or finding["unvalidated"]) and "accepted" not in finding


def judge_again(record: dict, more_fails: bool) -> tuple[str, str]:
    """State and reason of an asset when what is accepted does not count, and advice may."""
    state, reason = record["state"], record["reason"]
    findings = record["findings"]
    found = [each for each in findings if each["kind"] != "advice"]
    failing = [each for each in found if each["fails"]]
    if state == FAILED and failing and not more_fails and not any(map(counts, failing)):
        state = INCOMPLETE if any(map(counts, found)) else ACCEPTED
        reason = IN_PART if state == INCOMPLETE else ""
    elif state == INCOMPLETE and not more_fails and not any(map(counts, found)):
        state, reason = ACCEPTED, ""
    if state in (PASSED, ACCEPTED, INCOMPLETE):
        if any(each["kind"] == "advice" and counts(each) for each in findings):
            return FAILED, "advice counts"
    return state, reason


def described(entries: list[Entry], path: str, records: list[dict]) -> dict:
    """What is told of --accept in the summary."""
    accepted = [sum("accepted" in each for each in record["findings"]) for record in records]
    return {"file": printable(path), "findings": sum(accepted),
            "assets": sum(count > 0 for count in accepted),
            "entries": [{"line": each.line, "id": each.id, "assets": each.assets,
                         "until": each.until and each.until.isoformat(),
                         "why": printable(each.why), "matched": each.matched,
                         "problem": problem_of(each)} for each in entries]}


def problem_of(entry: Entry) -> str | None:
    if entry.is_out_of_date():
        return "is out of date"
    return None if entry.matched else "matches nothing"


def store_entries(records: Iterable[dict], path: str, day: str) -> None:
    """A file for --accept with all that a run found, a line for each id and asset."""
    lines = [f"# Written by quorlin-batch --write-accept on {day}. Say why after #."]
    for record in records:
        pattern = re.sub(r"([*?[])", r"[\1]", record["name"])
        for name, why in sorted(acceptable(record).items()):
            lines.append(f'{name} "{pattern}"' + (f"  # {why}" if why else ""))
    write_whole(path, ("\n".join(lines) + "\n").encode())


def acceptable(record: dict) -> dict[str, str]:
    """Ids that count, with the reason why they have been accepted already. Rules stand for the
    line of the container that follows them."""
    ids: dict[str, str] = {}
    whys = {each["id"]: each.get("accepted", "") for each in record["findings"]}
    for finding in record["findings"]:
        if finding["fails"] or finding["unvalidated"]:
            sets = finding.get("rules") or [[finding["id"]]]
            for name in {rule for rules in sets for rule in rules or [finding["id"]]}:
                ids[name] = whys.get(name, "")
    return ids
