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

WALKED = "printf -- '" + "-" * 48 + r"\nx:\nx has been verified.\n\n'; "
PASSED = WALKED + "echo validation result: PASSED"
FAILED = r"""printf 'ERROR: Lost sync.\n\nvalidation result: FAILED\n'"""
MEDIA = '#EXTM3U\n#EXT-X-MAP:URI="more.ts"\n' + "#EXTINF:2,\nseg.ts\n#EXTINF:2,\nmore.ts\n"
# Runs the script beside the playlist and counts the runs there.
FAKE = """#!/bin/sh
[ "$1" = -v ] && { cat "$0.version"; exit; }
cd "$(dirname "$2")" && echo run >> runs && . ./fake.sh
"""


class BatchTest(unittest.TestCase):
    """A test with an empty folder: catalogue/ in it, reports go to reports/."""
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name).resolve()
        self.catalogue = self.folder / "catalogue"
        self.reports = self.folder / "reports"
        self.catalogue.mkdir()
        self.quorlin = self.folder / "fake quorlin"
        self.quorlin.write_text(FAKE)
        self.quorlin.chmod(self.quorlin.stat().st_mode | stat.S_IXUSR)
        self.set_version("1.0")

    def set_version(self, version: str) -> None:
        Path(f"{self.quorlin}.version").write_text(f"*** Version {version} ***\n")

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
