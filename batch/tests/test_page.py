"""The page, in a real browser: what it shows, filters, sorts and links to; and that no text of an
asset becomes markup."""

import sys
import unittest

from browser import CHROMIUM, Browser
from support import FAILED, PASSED, SOURCE, BatchTest

sys.path.insert(0, str(SOURCE))
from quorlin_batch.page import store_page  # noqa: E402
from quorlin_batch.summary import frequent_findings  # noqa: E402
from quorlin_batch.verdict import STATES  # noqa: E402

ROWS = "[...document.querySelectorAll('#rows tr')].map(row => row.children[1].textContent)"
HARM = "document.title=1"
EVIL = f"</script><script>{HARM}</script><img src=x onerror={HARM}>"


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

    def test_page(self) -> None:
        self.asset("good")
        self.asset("odd #1 ?%41", "echo 'ERROR: Lost sync.'; " + FAILED)
        self.asset("bad", "for i in 1 2 3; do echo 'ERROR: Bad PTS '$i; done; " + FAILED)
        self.asset("<img src=x onerror=alert()>", f"echo 'ERROR: {EVIL}'; {PASSED}")
        self.asset("gone", "exit 255")
        self.batch()
        self.open()
        self.assertEqual(self.browser.evaluate("document.querySelector('h1').textContent"),
                         "2 of 5 assets passed")
        self.assertEqual(self.browser.evaluate(ROWS)[0], "gone/list.m3u8")
        self.assertEqual(self.browser.evaluate("document.title"), f"quorlin: {self.catalogue}")
        self.assertEqual(self.browser.evaluate("document.querySelectorAll('img').length"), 0)

        self.click("#states [data-state='2']")  # failed
        self.assertEqual(sorted(self.browser.evaluate(ROWS)),
                         ["bad/list.m3u8", "odd #1 ?%41/list.m3u8"])
        self.assertEqual(self.browser.evaluate("location.hash"), "#state=failed")
        self.browser.evaluate("const box = document.getElementById('search'); "
                              "box.value = 'SYNC odd'; box.dispatchEvent(new Event('input'))")
        self.assertEqual(self.browser.evaluate(ROWS), ["odd #1 ?%41/list.m3u8"])
        self.click("#clear")
        self.assertEqual(len(self.browser.evaluate(ROWS)), 5)
        self.click("[data-sort=name]")
        self.assertEqual([row[:4] for row in self.browser.evaluate(ROWS)],
                         ["<img", "bad/", "gone", "good", "odd "])
        self.click("#findings [data-finding='1']")
        self.assertEqual(
            self.browser.evaluate(
                "document.querySelector('#findings [aria-pressed=true] .code').textContent"),
            "ERROR: Bad PTS N")
        self.assertEqual(self.browser.evaluate(ROWS), ["bad/list.m3u8"])

        self.open("#finding=ERROR:+Bad+PTS+N")
        self.assertEqual(self.browser.evaluate(ROWS), ["bad/list.m3u8"])
        self.open("#q=sync&state=failed,passed")
        self.assertEqual(self.browser.evaluate("document.getElementById('shown').textContent"),
                         "2 of 5 assets")
        link = self.browser.evaluate("document.querySelector('#rows a').href")
        self.browser.open(link)
        self.assertIn("ERROR: Lost sync.", self.browser.evaluate("document.body.textContent"))

    def test_thousands_of_assets(self) -> None:
        self.reports.mkdir()
        store_page(make_summary(5000), str(self.reports / "index.html"))
        self.open()
        self.assertLess(len(self.browser.evaluate(ROWS)), 1000)
        self.open("#q=title+4323&sort=-findings")
        self.assertEqual(self.browser.evaluate(ROWS), ["title 4323/master.m3u8"])
        self.browser.evaluate("document.querySelector('#rows details').open = true")
        self.assertEqual(
            self.browser.evaluate("new Promise(done => setTimeout(() => "
                                  "done(document.querySelectorAll('#rows li').length), 100))"), 3)


def make_summary(count: int) -> dict:
    """A summary of many assets, every third of them with findings."""
    records = []
    for index in range(count):
        texts = [f"ERROR: PTS {index + number}" for number in range(3)] if index % 3 == 0 else []
        name = f"title {index}/master.m3u8"
        records.append({
            "asset": f"/c/{name}", "name": name, "state": STATES[index % 5 if texts else 0],
            "reason": "", "report": "x", "seconds": index / 10, "attempts": 1, "host": "host",
            "findings": [{"level": "error", "count": index, "text": text} for text in texts],
            "more_findings": 0
        })
    totals = {state: sum(record["state"] == state for record in records) for state in STATES}
    return {
        "root": "/c", "quorlin": "1", "seconds": 9000, "validated_now": count, "problems": [],
        "interrupted": False, "totals": {"assets": count} | totals, "assets": records,
        "frequent_findings": frequent_findings(records)
    }
