"""What the tests share: catalogues made for a test, a quorlin that does as told, and calls of
quorlin-batch."""

import json
import os
import stat
import subprocess
import tempfile
import unittest
from pathlib import Path

SOURCE = Path(__file__).resolve().parents[1]
PROGRAM = SOURCE / "quorlin-batch"
EXAMPLES = SOURCE.parent / "examples"
QUORLIN = os.environ.get("QUORLIN", str(SOURCE.parent / "build" / "quorlin"))

MEDIA = '#EXTM3U\n#EXT-X-MAP:URI="more.ts"\n' + "#EXTINF:2,\nseg.ts\n#EXTINF:2,\nmore.ts\n"
# quorlin-json, as far as a script beside the playlist says: events by these functions. Counts the runs there.
FAKE = r"""#!/bin/sh
place() {
  printf '"playlist":"list.m3u8","line":%s,"segment":"%s","offset":%s,"stream":256,"time":90000' "${LINE:-3}" "${SEGMENT:-seg.ts}" "${OFFSET:-188}"
}
finding() { # ID TEXT [FAILS [REPEATED]]
  printf '{"event":"finding","id":"%s","text":"%s\\n","fails":%s,"repeated":%s,%s}\n' "$1" "$2" "${3:-true}" "${4:-false}" "$(place)"
}
reason() { # ID REASON [UNVALIDATED]
  echo "quorlin: list.m3u8: $2" >&2
  printf '{"event":"reason","id":"%s","reason":"%s","file":"list.m3u8","fails":false,"unvalidated":%s,%s}\n' "$1" "$2" "${3:-true}" "$(place)"
}
playlist() {
  printf '{"event":"playlist","playlist":"list.m3u8","line":null,"master":false,"group_id":null,"name":null,"language":"en","codecs":"avc1",'
  printf '"resolution":null,"bandwidth":%s,"average_bandwidth":null,"target_duration":%s,"media_sequence":0,"playlist_type":%s,' \
    "${BANDWIDTH:-null}" "${TARGET:-2}" "${TYPE:-null}"
  printf '"key_method":null,"end_list":%s,"segments":2}\n' "${END:-true}"
}
segment() { # NAME LINE FIRST END [EXTINF]: times in ticks
  printf '{"event":"segment","playlist":"list.m3u8","line":%s,"segment":"%s","uri":"%s","container":"ts","init":false,' "$2" "$1" "$1"
  printf '"duration":%s,"range_start":null,"range_length":null,"bytes_read":376,"discontinuity_sequence":%s,"streams":[' "${5:-2}" "${DISCONTINUITY:-0}"
  printf '{"id":256,"codec":"avc1","first_time":%s,"last_time":%s,"end_time":%s,"units":50,"payload_bytes":184,"channels":null,"data_rate_kbps":null}]}\n' "$3" "$4" "$4"
}
verdict() { printf '{"event":"verdict","text":"\\nvalidation result: %s\\n","result":"%s","exit_code":0}\n' "$1" "$1"; }
walked() { playlist; segment seg.ts 3 0 180000; segment more.ts 5 180000 360000; }
passed() { walked; verdict PASSED; }
failed() { finding ts-lost-sync "ERROR: Lost sync."; walked; verdict FAILED; }
[ "$1" = --explain ] && { shift; for id; do printf '%s fails the verdict\n\n    About %s.\n\n    Fix: it.\n\n' $id $id; done; exit; }
[ "$1" = --ids ] && { printf 'ts-lost-sync  x\nts-note\nts-payload\nztp-001\nztp-002\nztp-errors\nreason-ts-skipped\n'; exit; }
cd "$(dirname "$2")" && echo run >> runs && . ./fake.sh
"""
PASSED, FAILED = "passed", "failed"


class BatchTest(unittest.TestCase):
    """A test with an empty folder: catalogue/ in it, reports go to reports/."""
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name).resolve()
        self.catalogue = self.folder / "catalogue"
        self.reports = self.folder / "reports"
        self.catalogue.mkdir()
        self.quorlin = self.folder / "fake bin" / "quorlin"
        self.quorlin.parent.mkdir()
        self.program(self.quorlin.with_name("quorlin-json"), FAKE)
        self.set_version("echo '*** Version 1.0 ***'")

    def program(self, path: Path, script: str) -> None:
        path.write_text(script)
        path.chmod(path.stat().st_mode | stat.S_IXUSR)

    def set_version(self, script: str) -> None:
        self.program(self.quorlin, f"#!/bin/sh\n{script}\n")

    def asset(self, name: str, script: str = PASSED, playlist: str = MEDIA) -> Path:
        """A playlist with two segments, in a folder of its own, and what quorlin does with it."""
        folder = Path(os.fsdecode(os.path.join(os.fsencode(self.catalogue), os.fsencode(name))))
        folder.mkdir(parents=True)
        for segment in ("seg.ts", "more.ts"):
            (folder / segment).write_bytes(b"G")
        (folder / "fake.sh").write_text(script)
        (folder / "list.m3u8").write_text(playlist)
        return folder / "list.m3u8"

    def command(self, *arguments: object) -> list[str]:
        return [
            str(PROGRAM), *map(str, arguments or [self.catalogue]), "-o",
            str(self.reports),
            *([] if "--quorlin" in arguments else ["--quorlin", str(self.quorlin)])
        ]

    def batch(self, *arguments: object, **options) -> subprocess.CompletedProcess:
        return subprocess.run(self.command(*arguments),
                              capture_output=True,
                              check=False,
                              **{
                                  "cwd": self.folder,
                                  **options
                              })

    def summary(self) -> dict:
        return json.loads((self.reports / "summary.json").read_text())

    def records(self) -> dict[str, dict]:
        """Records of the summary by the asset's first folder."""
        return {
            record["asset"].removeprefix(f"{self.catalogue}/").split("/")[0]: record
            for record in self.summary()["assets"]
        }

    def runs(self) -> dict[str, int]:
        """How often quorlin was run, by the asset's folder."""
        return {
            path.parent.name: len(path.read_text().split())
            for path in self.catalogue.rglob("runs")
        }
