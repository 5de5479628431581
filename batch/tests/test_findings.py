"""What is made of findings: accepted ones, changes since the last call, advice."""

import json
import unittest
from datetime import date, timedelta

from support import EXAMPLES, FAILED, PASSED, QUORLIN, SOURCE, BatchTest

try:
    from jsonschema import Draft202012Validator
except ImportError:
    Draft202012Validator = None

LOST = "finding ts-lost-sync 'ERROR: Lost sync.'; "
RULES = ("finding ztp-001 one false; finding ztp-002 two false; finding ztp-errors payload; "
         "finding ztp-001 one false; finding ztp-errors payload; ")
LEFT_OUT = "reason reason-ts-skipped 'nothing is checked'; "
END = "walked; verdict FAILED"

# Name, what quorlin does, lines of --accept, (state, number of accepted findings).
ACCEPTED = [
    ("nothing accepted", LOST + END, "ts-note", ("failed", 0)),
    ("all", LOST + END, "ts-lost-sync # known", ("accepted", 1)),
    ("one of two", LOST + "finding ts-note x; " + END, "ts-lost-sync", ("failed", 1)),
    ("a reason", LEFT_OUT + PASSED, "reason-ts-skipped", ("accepted", 1)),
    ("but for what was left out", LOST + LEFT_OUT + END, "ts-lost-sync", ("incomplete", 1)),
    ("these assets", LOST + END, 'ts-lost-sync "these*/list.m3u8"', ("accepted", 1)),
    ("other assets", LOST + END, 'ts-lost-sync "x y*"', ("failed", 0)),
    ("today", LOST + END, f"ts-lost-sync until={date.today()}", ("accepted", 1)),
    ("yesterday", LOST + END, f"ts-lost-sync until={date.today() - timedelta(1)}", ("failed", 0)),
    ("a note", "finding ts-note x false; " + PASSED, "ts-note", ("passed", 1)),
    ("crash", LOST + "kill -SEGV $$", "ts-lost-sync", ("no_verdict", 1)),
    ("all rules", RULES + END, "ztp-001\nztp-002", ("accepted", 3)),
    ("one rule of two", RULES + END, "ztp-001", ("failed", 1)),
    ("the line after the rules", RULES + END, "ztp-errors", ("failed", 0)),
    ("that line without rules", "finding ztp-errors payload; " + END, "ztp-errors", ("accepted", 1)),
    ("a verdict without a finding", END, "ts-lost-sync", ("failed", 0)),
]

LONG = "segment {0} {1} {2} {3} {4}; "


def pair(first_end: int = 180000, second: int = 180000, end: int = 360000, extinf: float = 2) -> str:
    return (LONG.format("seg.ts", 3, 0, first_end, extinf)
            + LONG.format("more.ts", 5, second, end, extinf) + "verdict PASSED")


# Name, what quorlin says of the playlist and its segments, the advice on it.
ADVICE = [
    ("as it should be", "playlist; " + pair(), []),
    ("within the tolerance", "playlist; " + pair(190000, 190000, 380000), []),
    ("EXTINF too short", "TARGET=3; playlist; " + pair(240000, 240000, 480000, 2.1), ["advice-extinf"]),
    ("above the target", "playlist; " + pair(225000, 225000, 450000, 2.5), ["advice-target-duration"]),
    ("rounded to the target", "playlist; " + pair(216000, 216000, 432000, 2.4), []),
    ("bandwidth", "BANDWIDTH=1000; playlist; " + pair(), ["advice-bandwidth"]),
    ("enough bandwidth", "BANDWIDTH=1600; playlist; " + pair(), []),
    ("gap", "playlist; " + pair(134000, 180000), ["advice-gap"]),
    ("overlap", "playlist; " + pair(210000, 176000, 356000), ["advice-overlap"]),
    ("jump", "playlist; " + pair(180000, 900000, 1080000), ["advice-discontinuity"]),
    ("jump that is said", "playlist; segment seg.ts 3 0 180000; DISCONTINUITY=1; "
     "segment more.ts 5 900000 1080000; verdict PASSED", []),
    ("no end", "END=false TYPE='\"VOD\"'; playlist; " + pair(), ["advice-endlist"]),
    ("live", "END=false; playlist; " + pair(), []),
    ("query", "playlist; segment seg.ts 3 0 180000; segment 'm.ts?a=%20' 5 null null "
     "| sed 's/\"container\":\"ts\"/\"container\":null/; s/:50/:0/'; verdict PASSED", ["advice-uri"]),
    ("key", "playlist | sed 's/\"key_method\":null/\"key_method\":\"AES-128\"/'; segment seg.ts 3 null null "
     "| sed 's/\"container\":\"ts\"/\"container\":null/; s/:50/:0/'; segment more.ts 5 0 180000; verdict PASSED", ["advice-key"]),
    ("variants", "playlist; segment seg.ts 3 0 180000; { playlist; segment seg.ts 3 90000 270000; } "
     "| sed s/list.m3u8/other.m3u8/; verdict PASSED", ["advice-boundaries"]),
]


class Accepted(BatchTest):
    def accept(self, lines: str, *arguments: object):
        (self.folder / "accepted").write_text(lines + "\n")
        return self.batch(self.catalogue, "--accept", self.folder / "accepted", *arguments)

    def test_what_is_accepted(self) -> None:
        for name, script, _, _ in ACCEPTED:
            self.asset(name, script)
        self.batch()
        for name, _, lines, (state, count) in ACCEPTED:
            with self.subTest(name):
                done = self.accept(lines)
                record = self.records()[name]
                accepted = ["accepted" in finding for finding in record["findings"]]
                self.assertEqual((record["state"], sum(accepted)), (state, count), done)

    def test_verdicts_and_files_follow(self) -> None:
        self.asset("a", LOST + END)
        self.asset("b", LOST + END)
        known = self.accept('ts-lost-sync a/* # a camera\nts-lost-sync b/* until=2020-01-01\nts-note')
        self.assertEqual(known.returncode, 1)
        self.assertIn(b"line 2: ts-lost-sync is out of date", known.stdout)
        self.assertIn(b"line 3: ts-note matches nothing", known.stdout)
        entries = self.summary()["accepted"]["entries"]
        self.assertEqual([entry["matched"] for entry in entries], [1, 0, 0])
        self.assertEqual(self.records()["a"]["findings"][0]["accepted"], "a camera")
        self.assertEqual((self.reports / "junit.xml").read_text().count("<failure"), 1)
        self.assertEqual(self.accept("ts-lost-sync").returncode, 0)
        self.assertEqual(self.accept("ts-lost-snyc").returncode, 64)
        self.assertEqual(self.accept("ts-lost-sync a b").returncode, 64)

    def test_baseline(self) -> None:
        for name, script in (("a", LOST + END), ("b [1]", RULES + END), ("c", LEFT_OUT + PASSED)):
            self.asset(name, script)
        baseline = self.folder / "baseline"
        self.assertEqual(self.batch(self.catalogue, "--write-accept", baseline).returncode, 1)
        ids = [line.split()[0] for line in baseline.read_text().splitlines()[1:]]
        self.assertEqual(ids, ["ts-lost-sync", "ztp-001", "ztp-002", "reason-ts-skipped"])
        self.assertEqual(self.batch(self.catalogue, "--accept", baseline).returncode, 0)


class Since(BatchTest):
    def test_new_gone_and_as_before(self) -> None:
        self.asset("same", FAILED)
        fixed, broken = self.asset("fixed", FAILED), self.asset("broken")
        self.batch()
        self.assertIsNone(self.summary()["since"])
        (fixed.parent / "fake.sh").write_text(PASSED)
        (broken.parent / "fake.sh").write_text("finding ts-note x; " + FAILED)
        self.asset("added", FAILED)
        done = self.batch(self.catalogue, "--force")
        since = self.summary()["since"]
        figures = {key: since[key] for key in ("new", "gone", "same", "added", "removed")}
        self.assertEqual(figures, {"new": 2, "gone": 1, "same": 1, "added": 1, "removed": 0}, done)
        self.assertEqual(since["states"], [["failed", "passed", 1], ["passed", "failed", 1]])
        records = self.records()
        self.assertEqual(records["broken"]["new"], ["ts-lost-sync", "ts-note"])
        self.assertEqual([gone["id"] for gone in records["fixed"]["gone"]], ["ts-lost-sync"])
        self.assertIn(b"2 new, 1 gone, 1 as before", done.stdout)


class Advice(BatchTest):
    def test_advice(self) -> None:
        for name, script, _ in ADVICE:
            self.asset(name, script)
        done = self.batch()
        self.assertEqual(done.returncode, 0, done)
        records = self.records()
        for name, _, ids in ADVICE:
            with self.subTest(name):
                given = [each["id"] for each in records[name]["findings"] if each["kind"] == "advice"]
                self.assertEqual(given, ids, json.dumps(records[name]["findings"]))
        self.assertEqual(self.batch(self.catalogue, "--advice", "fail").returncode, 1)
        failed = {name for name, record in self.records().items() if record["state"] == "failed"}
        self.assertEqual(failed, {name for name, _, ids in ADVICE if ids})
        for name in {name for _, _, ids in ADVICE for name in ids}:
            self.assertIn(b"Rule: RFC 8216", self.batch("--explain", name).stdout)
        self.assertEqual(self.batch("--explain", "advice-unheard-of").returncode, 64)


class Schema(BatchTest):
    @unittest.skipUnless(Draft202012Validator, "python3-jsonschema is not installed: summary.json is not tested")
    def test_summary(self) -> None:
        schema = json.loads((SOURCE.parent / "docs" / "summary.schema.json").read_text())
        self.asset("changed")
        self.asset("rules", RULES + END)
        (self.folder / "accepted").write_text("ztp-001\nts-note until=2020-01-01")
        arguments = (self.catalogue, EXAMPLES, "/nowhere.m3u8", "--quorlin", QUORLIN)
        for calls in ([self.catalogue, "--accept", self.folder / "accepted"], arguments):
            self.batch(*calls)
            self.batch(*calls, "--force", "--advice=fail")
            Draft202012Validator(schema).validate(self.summary())
