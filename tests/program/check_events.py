#!/usr/bin/python3
"""check_events.py SCHEMA QUORLIN-JSON FOLDER: for each NAME.events in FOLDER, what quorlin-json wrote for a run: every
event is of the schema, every id has an explanation, and the texts in order are NAME.stdout, which quorlin wrote for the
same run; NAME.stderr and NAME.events.stderr are equal. A run whose output could not be written is not given."""

import json
import subprocess
import sys
from pathlib import Path

from jsonschema import Draft202012Validator


def validators(schema):
    """One for each kind of event, so that an error is told of the member and not of all kinds."""
    kinds = [reference["$ref"].rsplit("/", 1)[1] for reference in schema["oneOf"]]
    return {kind: Draft202012Validator({"$ref": f"#/$defs/{kind}", "$defs": schema["$defs"]}) for kind in kinds}


def problems(stem, by_kind, ids):
    lines = Path(f"{stem}.events").read_bytes().split(b"\n")
    if lines.pop() != b"":
        yield "the last event has no line end"
    events = [json.loads(line) for line in lines]
    for number, event in enumerate(events, 1):
        for error in by_kind[event["event"]].iter_errors(event):
            yield f"event {number}: {error.message}"
        if "id" in event and event["id"] not in ids:
            yield f"event {number}: {event['id']} is not explained"
    if [events[0]["event"], events[-1]["event"]] != ["start", "verdict"]:
        yield "the first event is start, the last one verdict"
    if sum(event["event"] == "verdict" for event in events) != 1:
        yield "there is one verdict"
    texts = "".join(event.get("text", "") for event in events).encode("utf-8", "surrogateescape")
    if texts != Path(f"{stem}.stdout").read_bytes():
        yield "the texts are not the standard output of quorlin"
    if Path(f"{stem}.events.stderr").read_bytes() != Path(f"{stem}.stderr").read_bytes():
        yield "standard error differs from quorlin's"
    failed = any(event.get("fails", False) for event in events)
    if events[-1]["result"] is not None and failed != (events[-1]["result"] == "FAILED"):
        yield f"the verdict is {events[-1]['result']}, and {'an' if failed else 'no'} event fails it"


def main(schema, program, folder):
    by_kind = validators(json.loads(Path(schema).read_text(encoding="utf-8")))
    ids = set(subprocess.run([program, "--ids"], stdout=subprocess.PIPE, encoding="utf-8", check=True).stdout.split())
    runs = sorted(Path(folder).glob("*.events"))
    failed = 0
    for run in runs:
        found = list(problems(run.with_suffix(""), by_kind, ids))
        failed += bool(found)
        for problem in found[:10]:
            print(f"{run.stem}: {problem}")
    print(f"{len(runs)} runs with their events, {failed} wrong")
    return 1 if failed or not runs else 0


sys.exit(main(*sys.argv[1:4]))
