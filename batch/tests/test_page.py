"""The pages, in a real browser: what they show, filter, sort and link to; and that no text of an asset becomes markup."""

import sys
import unittest

from browser import CHROMIUM, Browser
from support import FAILED, PASSED, SOURCE, BatchTest

sys.path.insert(0, str(SOURCE))
from quorlin_batch.page import store_pages  # noqa: E402
from quorlin_batch.reports import Settings  # noqa: E402
from quorlin_batch.summary import Batch, summarize  # noqa: E402

ROWS = "[...document.querySelectorAll('#rows tr')].map(row => row.children[1].textContent)"
HARM = "document.title=1"
EVIL = f"</script><script>{HARM}</script><img src=x onerror={HARM}>"
LONG = ("playlist; for i in $(seq {count}); do SEGMENT=$i.ts LINE=$((2 * i)); "
        "[ $i = 7 ] && finding ts-lost-sync 'ERROR: Lost sync.'; "
        "segment $i.ts $((2 * i)) $((i * 180000 - 180000)) $((i * 180000)); done; verdict FAILED")


@unittest.skipUnless(CHROMIUM, "chromium is not installed: the page is not tested")
class Page(BatchTest):
    def setUp(self) -> None:
        super().setUp()
        self.browser = Browser()
        self.addCleanup(self.browser.close)

    def open(self, fragment: str = "") -> None:
        self.browser.open((self.reports / "index.html").as_uri() + fragment)

    def click(self, selector: str) -> None:
        self.browser.evaluate(f"document.querySelector({selector!r}).click()")

    def text(self, selector: str) -> str:
        return self.browser.evaluate(f"document.querySelector({selector!r}).textContent")

    def rows(self) -> list[str]:
        return self.browser.evaluate(ROWS)

    def test_catalogue(self) -> None:
        self.asset("good", "END=false; TYPE='\"VOD\"'; " + PASSED)
        self.asset("odd #1 ?%41", "finding ts-lost-sync 'ERROR: Lost sync.'; finding ts-note x; walked; verdict FAILED")
        for name in ("bad", "bad too"):
            self.asset(name, "for i in 1 2 3; do finding ts-payload 'ERROR: Bad PTS '$i; done; walked; verdict FAILED")
        self.asset("<img src=x onerror=alert()>", f"finding ts-x '{EVIL}' false; {PASSED}")
        self.asset("gone", "exit 255")
        self.batch()
        self.open()
        self.assertEqual(self.text("h1"), "2 of 6 assets passed")
        self.assertEqual(self.rows()[0], "gone/list.m3u8")
        self.assertEqual(self.browser.evaluate("document.title"), f"quorlin: {self.catalogue}")
        self.assertEqual(self.browser.evaluate("document.querySelectorAll('img').length"), 0)

        self.click("#states [data-key='3']")  # failed
        self.assertEqual(sorted(self.rows()), ["bad too/list.m3u8", "bad/list.m3u8", "odd #1 ?%41/list.m3u8"])
        self.assertEqual(self.browser.evaluate("location.hash"), "#state=failed")
        self.browser.evaluate("const box = document.getElementById('search'); "
                              "box.value = 'SYNC odd'; box.dispatchEvent(new Event('input'))")
        self.assertEqual(self.rows(), ["odd #1 ?%41/list.m3u8"])
        self.click("#clear")
        self.click("[data-sort=name]")
        self.assertEqual([row[:4] for row in self.rows()], ["<img", "bad ", "bad/", "gone", "good", "odd "])
        self.click("#findings [data-key='ts-payload']")
        self.assertEqual(len(self.rows()), 2)
        self.assertIn("About ts-payload.", self.text("#findings .explanation"))
        self.click("#advice [data-key='advice-endlist']")
        self.assertEqual(self.rows(), ["good/list.m3u8"])
        self.click("#clear")
        self.click("#sets button")
        self.assertEqual(self.rows(), ["bad too/list.m3u8", "bad/list.m3u8"])

        self.open("#finding=ts-lost-sync")
        self.assertEqual(self.rows(), ["odd #1 ?%41/list.m3u8"])
        self.browser.open(self.browser.evaluate("document.querySelector('#rows a').href"))
        self.assertIn("ts-lost-sync", self.text(".findings"))
        self.browser.open(self.browser.evaluate("document.querySelector('header a').href"))
        self.assertEqual(len(self.rows()), 6)

    def test_changes_and_accepted_findings(self) -> None:
        asset = self.asset("a")
        self.batch()
        (asset.parent / "fake.sh").write_text(FAILED)
        (self.folder / "accepted").write_text("ts-lost-sync # known\nts-note\n")
        self.batch(self.catalogue, "--force", "--accept", self.folder / "accepted")
        self.open("#change=new")
        self.assertEqual(self.rows(), ["list.m3u8"])
        self.assertIn("1 finding of 1 asset accepted", self.text("#accepted"))
        self.assertIn("matches nothing", self.text("#accepted .stale"))
        self.browser.open(self.browser.evaluate("document.querySelector('#rows a').href"))
        self.assertIn("accepted: known · new since the last time", self.text(".findings"))
        self.assertEqual(self.browser.evaluate("document.querySelectorAll('rect.accepted').length"), 1)

    def test_asset(self) -> None:
        asset = self.asset(EVIL.replace("/", "\u2215"), LONG.format(count=400))
        self.batch(asset)
        self.open()
        self.browser.open(self.browser.evaluate("document.querySelector('#rows a').href"))
        self.assertEqual(self.browser.evaluate("document.querySelectorAll('img').length"), 0)
        self.assertIn("7.ts", self.text("#segment h3"))
        self.assertIn("7.ts, byte 188, stream 256, time stamp 1.000 s", self.text("#segment .findings"))
        # Drawn is what is in sight, and a click leads to the findings of a segment.
        shown = "document.querySelectorAll('#timeline rect.cell').length"
        all_cells = self.browser.evaluate(shown)
        for _ in range(5):
            self.click(".zoom button:nth-of-type(3)")
        self.assertLess(self.browser.evaluate(shown), all_cells / 2)
        self.browser.evaluate("at('timeline').scrollLeft = 1e9")
        self.browser.evaluate("new Promise(done => setTimeout(done, 200))")
        self.browser.evaluate("(() => { const box = document.querySelector('svg').getBoundingClientRect(); "
                              "document.querySelector('svg').dispatchEvent(new MouseEvent('click', "
                              "{clientX: box.right - 20, clientY: box.top + 25, bubbles: true})); })()")
        self.assertEqual(self.text("#segment h3"), "400.ts")
        self.assertIn("Nothing was found", self.text("#segment"))
        self.assertIn("EXTINF", self.text("svg .chart text"))
        self.assertIn("avc1", self.text("tbody"))

    def test_thousands_of_assets(self) -> None:
        settings = Settings(str(self.reports), "/bin/true", "1", 1, None)
        self.reports.mkdir()
        batch = Batch(settings, [f"/c/title {index}/master.m3u8" for index in range(20000)], "2026-01-01T00:00:00Z")
        store_pages(summarize(batch, [make_result(index) for index in range(20000)]), settings)
        self.assertLess((self.reports / "index.html").stat().st_size, 5e6)
        self.open()
        self.assertLess(len(self.rows()), 1000)
        self.open("#q=title+14323&sort=-findings")
        self.assertEqual(self.rows(), ["title 14323/master.m3u8"])
        self.browser.evaluate("document.querySelector('#rows details').open = true")
        self.browser.evaluate("new Promise(done => setTimeout(done, 100))")
        self.assertEqual(self.browser.evaluate("document.querySelectorAll('#rows li').length"), 3)


def make_result(number: int) -> dict:
    """A result with findings of three ids."""
    findings = [{"kind": "finding", "id": f"ts-{number % 7 + each}", "fails": True, "unvalidated": False,
                 "count": number, "text": f"ERROR: PTS {number + each}", "playlist": "v.m3u8",
                 "first": {"segment": "a.ts", "offset": number}} for each in range(3)]
    return {"state": "failed", "reason": "", "verdict": "FAILED", "exit_code": 0, "attempts": 1, "started": "",
            "seconds": number / 10, "host": "host", "findings": findings, "more_findings": 0, "more_fails": False,
            "playlists": [], "inventory": []}
