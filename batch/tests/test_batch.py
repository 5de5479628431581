"""Whole batches: verdicts, names, what is done again and what is not, interruptions."""

import json
import os
import signal
import subprocess
import sys
import time
from urllib.parse import unquote_to_bytes
from xml.etree import ElementTree

from support import EXAMPLES, FAILED, MEDIA, PASSED, QUORLIN, SOURCE, BatchTest

sys.path.insert(0, str(SOURCE))
from quorlin_batch import findings  # noqa: E402

NO_SEGMENT = ("nothing_validated", "no segment", 1)
IN_PART = ("incomplete", "not everything", 1)
NO_END = ("no_verdict", "without a verdict", 1)


def reason(text: str) -> str:
    return f"echo 'quorlin: list.m3u8: {text}' >&2; "


# Name, (state, part of the reason, runs), what quorlin does.
ENDS = [
    ("passed", ("passed", "", 1), PASSED),
    ("failed", ("failed", "", 1), FAILED),
    ("crash", ("no_verdict", "SIGSEGV", 2), "kill -SEGV $$"),
    ("crash once", ("passed", "", 2), "[ $(wc -l <runs) = 1 ] && kill -SEGV $$; " + PASSED),
    ("crash behind the verdict", ("no_verdict", "SIGABRT", 2), PASSED + "; kill -ABRT $$"),
    ("sanitizer", ("no_verdict", "exit code 1", 2), "exit 1"),
    ("hang", ("no_verdict", "time limit of 2 s", 2), "sleep 60"),
    ("exit 255", ("no_verdict", "Invalid path", 1), "echo 'ERROR: Invalid path'; exit 255"),
    ("255 behind a verdict", NO_END, PASSED + "; exit 255"),
    ("silent", NO_END, "exit 0"),
    ("verdict not last", NO_END, PASSED + "; echo more"),
    ("no line end", ("failed", "", 1), "printf 'validation result: FAILED'"),
    ("no segment named", NO_SEGMENT, PASSED),
    ("all missing", NO_SEGMENT, reason("no segment could be read") + PASSED),
    ("master", NO_SEGMENT, reason("a master playlist where a media playlist is expected") + PASSED),
    ("nothing walked", NO_SEGMENT, "echo 'validation result: PASSED'"),
    ("no program", NO_SEGMENT, reason("no program map table is complete: nothing is checked") * 2
     + PASSED),
    ("one missing", IN_PART, "echo 'ERROR: Invalid segment path: b.ts'; " + PASSED),
    ("bytes skipped", IN_PART, reason("bytes 0 to 3 skipped: no sync word") + PASSED),
    ("disk full", ("no_verdict", "could not be written", 1),
     "echo 'ERROR: Failed to write elementary stream path: a.ec3'; " + FAILED),
    ("subtitles", ("passed", "", 1),
     reason("a rendition that is not of TYPE=AUDIO: the playlist is not validated") + PASSED),
]
NAMES = ["bl ank", "quo'te\"s", "line\nbreak", "-dash", "{} {#} $HOME `id` \\", "#hash %41 ?q",
         b"broken\xff\xc3", "<b>&amp;", "ünï", "colon: blank", "/".join(["long" * 60] * 5)]
SKIPPED = ('printf "quorlin: %s/seg.ts: no section is complete: nothing is checked\n" "$PWD" >&2; '
           * 2 + PASSED)


class Verdicts(BatchTest):
    def test_every_end_of_a_run(self) -> None:
        for name, _, script in ENDS:
            self.asset(name, script, "#EXTM3U\n" if name == "no segment named" else MEDIA)
        done = self.batch(self.catalogue, "-t", "2")
        self.assertEqual(done.returncode, 2, done)
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
        finding = r"printf 'ERROR: tag \001 \033[1m \377 ]]> </script>\n'"
        others = ("for i in $(seq 600); do "
                  "echo ERROR: $i; echo ERROR: m$i; echo '  s (pts:1)'; done; ")
        notes = "for i in $(seq 600); do echo n$i; done; "
        self.asset("many", f"for i in $(seq 3000); do {finding}; done; {notes}{others}" + FAILED)
        self.assertEqual(self.batch().returncode, 1)
        record = self.records()["many"]
        text = r"ERROR: tag \x01 \x1b[1m \xff ]]> </script>"
        self.assertEqual(record["findings"][0], {"level": "error", "count": 3000, "text": text})
        folder = self.reports / unquote_to_bytes(record["report"]).decode()
        stored = json.loads((folder / "result.json").read_text())
        self.assertEqual((len(stored["findings"]), stored["more_findings"]), (500, 550 + 250 + 1))
        self.assertEqual((len(record["findings"]), record["more_findings"]), (100, 801 + 301))
        case = ElementTree.parse(self.reports / "junit.xml").find(".//failure")
        self.assertEqual(case.text.split("\n")[0], f"3000 x {text}")
        self.assertNotIn(b"]]> </script>", (self.reports / "index.html").read_bytes())
        second = self.summary()["frequent_findings"][1]
        self.assertEqual((second["text"], second["count"]), ("ERROR: N", 50))

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

    def test_reasons_are_those_of_quorlin(self) -> None:
        sources = "".join(path.read_text() for path in (SOURCE.parent / "src").rglob("*.cpp"))
        for text in (*findings.OUT_OF_SCOPE, *findings.EMPTY_PLAYLIST, *findings.SKIPPED_SEGMENT,
                     *findings.UNWRITTEN, *findings.UNWRITTEN_REASON, findings.UNREADABLE,
                     findings.VERDICT, findings.VERIFIED):
            self.assertIn(text, sources)


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
        for path in playlists:
            (path.parent / "fake.sh").write_text(SKIPPED)
        done = self.batch(self.catalogue, "--force")
        self.assertEqual(self.summary()["totals"]["nothing_validated"], len(NAMES), done)
        reasons = [(each["text"], each["assets"]) for each in self.summary()["frequent_findings"]]
        self.assertEqual(reasons, [("no section is complete: nothing is checked", len(NAMES))])

    def test_list(self) -> None:
        names = ["b", "a c", "#d"]
        for name in names:
            self.asset(name)
        lines = ["# a comment", "", "catalogue/b/list.m3u8\r", "", "catalogue/a c/list.m3u8",
                 "./catalogue/#d", "catalogue/b/list.m3u8"]
        (self.folder / "titles.txt").write_text("\n".join(lines), encoding="utf-8-sig")
        self.assertEqual(self.batch("titles.txt").returncode, 0)
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
        self.reports = self.catalogue / "reports"
        for _ in range(2):  # the reports in the catalogue are not searched
            listed = self.batch(self.catalogue, "--dry-run").stdout.decode().splitlines()
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
                          [self.catalogue, "--quorlin", "/bin/false"]):
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
        self.asset("a")  # a title in front of the others
        self.check_runs(self.batch(), a=1, b=1, c=1)
        (c.parent / "seg.ts").write_bytes(b"GG")
        os.utime(b, (1, 1))  # older than its report, and yet another file
        self.check_runs(self.batch(), a=1, b=2, c=2)
        folder = self.reports / "assets" / str(b).lstrip("/")
        (folder / "result.json").write_text("{")
        self.check_runs(self.batch(), a=1, b=3, c=2)
        self.set_version("1.1")
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
