"""Whole batches: verdicts, names, what is done again and what is not, interruptions."""

import json
import os
import re
import signal
import subprocess
import sys
import time
from urllib.parse import unquote_to_bytes
from xml.etree import ElementTree

from support import EXAMPLES, FAILED, MEDIA, PASSED, QUORLIN, SOURCE, BatchTest

sys.path.insert(0, str(SOURCE))
from quorlin_batch import fold, verdict  # noqa: E402

NO_SEGMENT = ("nothing_validated", "no segment", 1)
IN_PART = ("incomplete", "not everything", 1)
NO_END = ("no_verdict", "without a verdict", 1)
SKIPPED = "reason reason-ts-skipped 'nothing is checked'; "

# Name, (state, part of the reason, runs), what quorlin does.
ENDS = [
    ("passed", ("passed", "", 1), PASSED),
    ("failed", ("failed", "", 1), FAILED),
    ("crash", ("no_verdict", "SIGSEGV", 2), "kill -SEGV $$"),
    ("crash once", ("passed", "", 2), "[ $(wc -l <runs) = 1 ] && kill -SEGV $$; " + PASSED),
    ("crash after the verdict", ("no_verdict", "SIGABRT", 2), PASSED + "; kill -ABRT $$"),
    ("sanitizer", ("no_verdict", "exit code 1", 2), "exit 1"),
    ("hang", ("no_verdict", "time limit of 2 s", 2), "sleep 60"),
    ("stray child", ("passed", "", 1), "sleep 60 & " + PASSED),
    ("exit 255", ("no_verdict", "Invalid path", 1), "finding run-x 'ERROR: Invalid path'; exit 255"),
    ("255 after a verdict", NO_END, PASSED + "; exit 255"),
    ("silent", NO_END, "exit 0"),
    ("no events", ("no_verdict", "events cannot be read", 1), "echo validation result: PASSED"),
    ("no event at its end", ("no_verdict", "events cannot be read", 1), PASSED + "; printf {"),
    ("nothing walked", NO_SEGMENT, "verdict PASSED"),
    ("no content", NO_SEGMENT, SKIPPED + "playlist; segment seg.ts 3 null null | sed s/:50/:0/; verdict PASSED"),
    ("one missing", IN_PART, SKIPPED + PASSED),
    ("disk full", ("no_verdict", "could not be written", 1), "finding output-write x; " + FAILED),
    ("remark", ("passed", "", 1), "reason reason-x 'not followed' false; " + PASSED),
]
NAMES = ["bl ank", "quo'te\"s", "line\nbreak", "-dash", "{} {#} $HOME `id` \\", "#hash %41 ?q",
         b"broken\xff\xc3", "<b>&amp;", "ünï", "colon: blank", "/".join(["long" * 60] * 5)]


class Verdicts(BatchTest):
    def test_every_end_of_a_run(self) -> None:
        for name, _, script in ENDS:
            self.asset(name, script)
        done = self.batch(self.catalogue, "-t", "2")
        self.assertEqual((done.returncode, done.stderr), (2, b""))
        records = self.records()
        self.assertEqual(records.keys(), {name for name, _, _ in ENDS})
        for name, (state, part, runs), _ in ENDS:
            with self.subTest(name):
                self.assertEqual(records[name]["state"], state)
                self.assertIn(part, records[name]["reason"])
                self.assertEqual((records[name]["attempts"], self.runs()[name]), (runs, runs))
        self.check_junit("failure", ("failed", "incomplete"), records)
        self.check_junit("error", ("no_verdict", "nothing_validated"), records)

    def check_junit(self, kind: str, states: tuple, records: dict) -> None:
        self.assertNotIn(str(self.catalogue), (self.reports / "junit.xml").read_text())
        suite = ElementTree.parse(self.reports / "junit.xml").find("testsuite")
        self.assertEqual(int(suite.get("tests")), len(records))
        expected = sorted(name for name, record in records.items() if record["state"] in states)
        cases = [case for case in suite if case.find(kind) is not None]
        self.assertEqual(sorted(case.get("classname") for case in cases), expected)
        self.assertEqual(int(suite.get(kind + "s")), len(expected))

    def test_exit_code(self) -> None:
        self.asset("a")
        self.assertEqual(self.batch().returncode, 0)
        failed = self.asset("b", FAILED)
        self.assertEqual(self.batch().returncode, 1)
        self.assertEqual(self.batch(failed, self.catalogue / "missing.m3u8").returncode, 2)

    def test_findings_are_folded_and_printable(self) -> None:
        text = r"ERROR: \u0001 \u001b[1m \udcff ]]> </script>"
        again = "for i in $(seq 3000); do OFFSET=$i finding ts-pts 'ERROR: PTS '$i true true; done; "
        self.asset("many", f"finding ts-a '{text}'; {again} echo oops >&2; {FAILED}")
        self.assertEqual(self.batch().returncode, 1)
        record = self.records()["many"]
        shown = r"ERROR: \x01 \x1b[1m \xff ]]> </script>"
        first, second, _ = record["findings"]
        self.assertEqual((first["text"], first["count"], "last" in first), (shown, 1, False))
        self.assertEqual((second["count"], second["repeated"], second["text"]), (3000, 3000, "ERROR: PTS 1"))
        self.assertEqual((second["first"]["offset"], second["last"]["offset"]), (1, 3000))
        folder = self.reports / unquote_to_bytes(record["report"]).decode()
        report = (folder / "report.txt").read_bytes()
        self.assertTrue(report.startswith(b"ERROR: \x01 \x1b[1m \xff ]]> </script>\nERROR: PTS 1\n"))
        self.assertTrue(report.endswith(b"\n\nvalidation result: FAILED\n"))
        self.assertEqual((folder / "stderr.txt").read_bytes(), b"oops\n")
        case = ElementTree.parse(self.reports / "junit.xml").find(".//failure")
        self.assertEqual(case.get("message"), f"{shown} (in seg.ts)")
        for page in (self.reports / "index.html", folder / "index.html"):
            self.assertNotIn(b"]]> </script>", page.read_bytes())

    def test_a_report_that_repeats_itself_stays_small(self) -> None:
        line = "ERROR: " + "x" * 90
        self.asset("many", f"finding ts-a '{line}' >line; yes \"$(cat line)\" | head -n 100000; {FAILED}")
        self.assertEqual(self.batch().returncode, 1)
        record = self.records()["many"]
        self.assertEqual(record["findings"][0]["count"], 100000)
        folder = self.reports / unquote_to_bytes(record["report"]).decode()
        report = (folder / "report.txt").read_text()
        self.assertLess(sum(path.stat().st_size for path in folder.iterdir()), 1 << 21)
        left_out = re.search(r"\n\[(\d+) lines, (\d+) bytes, are left out here\]\n", report)
        self.assertEqual(len(report) - len(left_out[0]) + int(left_out[2]), 98 * 100000 + len("ERROR: Lost sync.\n\nvalidation result: FAILED\n"))
        self.assertTrue(report.endswith("validation result: FAILED\n"))

    def test_examples(self) -> None:
        streams = self.folder / "streams"
        done = self.batch(EXAMPLES, EXAMPLES / "series" / "seg_%04d.ts", "--quorlin", QUORLIN,
                          "--streams", streams)
        self.assertEqual(done.returncode, 1, done)
        states = {record["name"]: record["state"] for record in self.summary()["assets"]}
        self.assertEqual(
            states, {
                "damaged/video.m3u8": "failed",
                "hls-fmp4-byterange/eac3.m3u8": "passed",
                "hls-fmp4/master.m3u8": "failed",
                "hls-packed/master.m3u8": "passed",
                "hls-ts-broken/master.m3u8": "failed",
                "hls-ts/master.m3u8": "passed",
                "series/seg_%04d.ts": "passed"
            })
        folder = streams / str(EXAMPLES / "hls-ts" / "master.m3u8").lstrip("/")
        self.assertEqual(sorted(os.listdir(folder)),
                         ["audio_pid_256.ec3", "video_pid_256.h264", "video_pid_257.adts"])
        report = self.reports / "assets" / str(
            EXAMPLES / "damaged" / "video.m3u8").lstrip("/") / "report.txt"
        self.assertTrue(report.read_text().endswith("validation result: FAILED\n"))
    def test_ids_are_those_of_quorlin(self) -> None:
        sources = "".join(path.read_text() for path in (SOURCE.parent / "src").rglob("*.cpp"))
        for name in (*verdict.UNWRITTEN, fold.RULES_BROKEN):
            self.assertIn(f'"{name}"', sources)


class Names(BatchTest):
    def test_any_name(self) -> None:
        playlists = [self.asset(name) for name in NAMES]
        names = b"\0".join(os.fsencode(path) for path in playlists) + b"\0"
        calls = [(["."], {"cwd": self.catalogue}), (["-0", "-", "--force"], {"input": names})]
        for arguments, options in calls:
            done = self.batch(*arguments, **options)
            self.assertEqual(done.returncode, 0, done)
            for record in self.summary()["assets"]:
                folder = self.reports / os.fsdecode(unquote_to_bytes(record["report"]))
                self.assertTrue((folder / "report.txt").is_file(), record)
            self.assertEqual(self.summary()["totals"]["passed"], len(NAMES))
        self.assertIn("broken\\xff\\xc3/list.m3u8",
                      [record["name"] for record in self.summary()["assets"]])
    def test_list(self) -> None:
        names = ["b", "a c", "#d"]
        for name in names:
            self.asset(name)
        lines = ["# a comment", "", "catalogue/b/list.m3u8\r", "", "catalogue/a c/list.m3u8",
                 "./catalogue/#d", "catalogue/b/list.m3u8"]
        (self.folder / "assets.txt").write_text("\n".join(lines), encoding="utf-8-sig")
        self.assertEqual(self.batch("assets.txt").returncode, 0)
        self.assertEqual([record["name"] for record in self.summary()["assets"]],
                         [f"{name}/list.m3u8" for name in names])

    def test_what_a_folder_holds(self) -> None:
        self.asset(
            "t", PASSED,
            '#EXT-X-MEDIA:TYPE=AUDIO,URI="a.m3u8"\n#EXT-X-STREAM-INF:CODECS="x"\nsub/v.m3u8\n'
            '#EXT-X-I-FRAME-STREAM-INF:URI="i.m3u8"\n#EXT-X-STREAM-INF:X=1\nlist.m3u8\n')
        (self.catalogue / "t" / "sub").mkdir()
        (self.catalogue / "t" / "loop").symlink_to(self.catalogue)
        for name in ("a", "sub/v", "i", "nobody", "sub/a"):
            (self.catalogue / "t" / f"{name}.m3u8").write_text(MEDIA)
        (self.catalogue / "loose").mkdir()
        (self.catalogue / "loose" / "0.ts").touch()
        (self.catalogue / "linked").mkdir()
        (self.catalogue / "linked" / "0.ts").touch()
        (self.catalogue / "t" / "link").symlink_to(self.catalogue / "linked")
        (self.catalogue / "t" / "nobody.m3u8").write_text("#EXTM3U\n#EXTINF:2,\nlink/0.ts\n")
        self.reports = self.catalogue / "reports"
        for _ in range(2):  # the reports in the catalogue are not searched
            done = self.batch(self.catalogue, "--dry-run")
            self.assertEqual(re.findall("(?<=catalogue/)(.*): not validated: 1 ", done.stderr.decode()), ["loose"])
            listed = done.stdout.decode().splitlines()
            self.assertEqual([line.removeprefix(f"{self.catalogue}/t/") for line in listed],
                             ["list.m3u8", "nobody.m3u8", "sub/a.m3u8"])
            (self.reports / "assets").mkdir(parents=True, exist_ok=True)
            (self.reports / "assets" / "x.m3u8").write_text(MEDIA)

    def test_usage_errors(self) -> None:
        self.asset("a")
        (self.folder / "empty").mkdir()
        (self.folder / "zeros").write_bytes(b"a\0b\0")
        for arguments in (["nowhere"], ["empty"], ["zeros"], [self.catalogue, "-t", "soon"],
                          [self.catalogue, "--unknown"], [self.catalogue, "-j", "many"],
                          [self.catalogue, "--streams", ""],
                          [self.catalogue, "--quorlin", "/bin/false"], [self.catalogue, "--quorlin", "nowhere/quorlin"]):
            done = self.batch(*arguments)
            self.assertEqual(done.returncode, 64, done)
            self.assertTrue(done.stderr.startswith(b"quorlin-batch: "), done)
            self.assertFalse((self.reports / "summary.json").exists())
        project = (SOURCE.parent / "CMakeLists.txt").read_text()
        version = self.batch("--version").stdout.decode().split()[-1]
        self.assertIn(f"project(quorlin VERSION {version} ", project)


class Again(BatchTest):
    def check_runs(self, done: subprocess.CompletedProcess, **runs: int) -> None:
        self.assertEqual(self.runs(), runs, done)
        self.assertEqual(self.summary()["totals"]["assets"], len(runs))

    def test_only_what_has_no_current_report(self) -> None:
        b, c = self.asset("b"), self.asset("c", FAILED)
        self.check_runs(self.batch(), b=1, c=1)
        self.check_runs(self.batch(), b=1, c=1)
        self.asset("a")  # before the others
        self.check_runs(self.batch(), a=1, b=1, c=1)
        (c.parent / "seg.ts").write_bytes(b"GG")
        os.utime(b, (1, 1))  # older than its report, and yet another file
        self.check_runs(self.batch(), a=1, b=2, c=2)
        folder = self.reports / "assets" / str(b).lstrip("/")
        (folder / "result.json").write_text("{")
        self.check_runs(self.batch(), a=1, b=3, c=2)
        self.set_version("echo 1.1")
        self.check_runs(self.batch(), a=2, b=4, c=3)
        self.check_runs(self.batch(self.catalogue, "--force"), a=3, b=5, c=4)
        streams = self.folder / "streams"
        self.check_runs(self.batch(self.catalogue, "--streams", streams), a=4, b=6, c=5)

    def test_no_verdict_stands_until_asked_for(self) -> None:
        self.asset("hang", "sleep 60")
        self.asset("crash", "kill -SEGV $$")
        self.asset("ok")
        self.check_runs(self.batch(self.catalogue, "-t", "1"), hang=2, crash=2, ok=1)
        self.check_runs(self.batch(self.catalogue, "-t", "1"), hang=2, crash=2, ok=1)
        self.check_runs(self.batch(self.catalogue, "-t", "1.5"), hang=4, crash=2, ok=1)
        self.check_runs(self.batch(self.catalogue, "-t", "1.5", "--retry"), hang=6, crash=4, ok=1)

    def test_interrupted(self) -> None:
        for name in "abc":
            self.asset(name, "[ -e ../go ] || sleep 60; " + PASSED)
        process = subprocess.Popen(self.command(self.catalogue, "-j3"), stdout=subprocess.PIPE,
                                   start_new_session=True)
        self.wait_until(lambda: len(self.runs()) == 3)
        second = self.batch()
        self.assertEqual(second.returncode, 64)
        self.assertIn(b"another quorlin-batch", second.stderr)
        os.killpg(process.pid, signal.SIGINT)
        output, _ = process.communicate(timeout=60)
        self.assertEqual(process.returncode, 2, output)
        self.assertIn(b"interrupted", output)
        kept = [path for path in (self.reports / "assets").rglob("*") if path.is_file()]
        self.assertEqual(kept, [])
        (self.catalogue / "go").touch()
        self.assertEqual(self.batch().returncode, 0)
        self.assertEqual(self.summary()["totals"]["passed"], 3)

    def test_killed(self) -> None:
        for name in "ab":
            self.asset(name, "until [ -e ../go ]; do sleep 0.1; done; " + PASSED)
        process = subprocess.Popen(self.command(self.catalogue, "-j1"))
        self.wait_until(self.runs)
        process.kill()
        process.wait()
        self.assertEqual(self.batch().returncode, 64)  # GNU parallel is still at work
        (self.catalogue / "go").touch()
        self.wait_until(lambda: self.batch().returncode == 0)
        self.check_runs(self.batch(), a=1, b=1)

    def test_nohup(self) -> None:
        for name in "abc":
            self.asset(name, "sleep 0.2; " + PASSED)
        process = subprocess.Popen(["nohup", *self.command(self.catalogue, "-j1")],
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                   start_new_session=True)
        self.wait_until(self.runs)
        os.killpg(process.pid, signal.SIGHUP)
        self.assertEqual(process.wait(60), 0)
        self.assertEqual(self.summary()["totals"]["passed"], 3)

    def wait_until(self, condition) -> None:
        for _ in range(600):
            if condition():
                return
            time.sleep(0.1)
        self.fail("waited for too long")
