"""The command line."""

import argparse
import re
import textwrap

from . import VERSION
from .assets import UsageError
from .explanations import explain
from .programs import find_quorlin

TIME_UNITS = {"": 1, "s": 1, "m": 60, "h": 3600, "d": 86400}

DESCRIPTION = """\
Validates a catalogue of HLS assets with quorlin, many at a time, and writes a
report for each and a page over all of them."""

EPILOG = """\
What is validated:
  FOLDER    every master playlist below it, and every media playlist that no
            master playlist there names
  PLAYLIST  that playlist; also a .ts file or a numbered series (seg_%04d.ts)
  LIST      the paths in a text file, one a line; empty lines and lines that
            begin with # are left out, blanks belong to the name; - reads
            standard input

A second call with the same reports folder goes on where the first one ended:
only what has no report, or whose files, quorlin or time limit have changed,
is validated. A crash or a time limit is tried a second time; findings and
exit code 255 stand.

In the reports folder:
  index.html     the page to read (no network, no server needed)
  summary.json   the same for programs; junit.xml for CI systems
  assets/...     of each asset a page, report.txt, stderr.txt and result.json

A line of --accept is the id of a finding and, if need be, a pattern of assets,
until=DATE, and why: ztp-068 "old/*" until=2027-03-31  # plain AC-3

Exit code: 0 all passed, 1 findings, 2 some asset reached no verdict,
64 the batch could not begin.

Examples:
  quorlin-batch /srv/catalogue -o reports
  quorlin-batch tonight.txt -o reports --jobs 8 --timeout 2h
  quorlin-batch /srv/catalogue -o /srv/reports --sshlogin host1,host2,:
  find . -name master.m3u8 -print0 | quorlin-batch -0 - -o reports
"""


def parse_time(text: str) -> float:
    """Seconds of a time like 90, 90s, 15m, 2h or 1.5d."""
    if not (found := re.fullmatch(r"(\d{1,9}(?:\.\d+)?)([smhd]?)", text)):
        raise argparse.ArgumentTypeError(f"not a time: {text} (write 90, 15m, 2h)")
    return float(found[1]) * TIME_UNITS[found[2]]


def folder_name(text: str) -> str:
    """An empty one (of a variable that is not set) would be the current folder."""
    if not text:
        raise argparse.ArgumentTypeError("the name of the folder is empty")
    return text


class Explain(argparse.Action):
    """Tells what an id means, of a finding, a reason or an advice, and ends."""

    def __call__(self, parser, namespace, values, option_string=None) -> None:
        (name,) = values
        paragraphs = explain(find_quorlin(None), {name}).get(name)
        if not paragraphs:
            parser.error(f"{name}: there is no such id")
        filled = [textwrap.fill(each, 76, initial_indent="    ", subsequent_indent="    ")
                  for each in paragraphs]
        print("\n\n".join([name, *filled]))
        parser.exit()


class Parser(argparse.ArgumentParser):
    def error(self, message: str) -> None:
        raise UsageError(f"{message}\nTry 'quorlin-batch --help' for more information.")


def command_line() -> argparse.ArgumentParser:
    parser = Parser(prog="quorlin-batch",
                    description=DESCRIPTION,
                    epilog=EPILOG,
                    allow_abbrev=False,
                    usage="quorlin-batch [OPTION]... FOLDER|LIST|PLAYLIST... -o REPORTS",
                    formatter_class=argparse.RawDescriptionHelpFormatter)
    add = parser.add_argument
    add("inputs", nargs="+", metavar="FOLDER|LIST|PLAYLIST", help=argparse.SUPPRESS)
    add("-o", "--output", metavar="REPORTS", required=True, type=folder_name,
        help="folder of the reports; made when it is missing")
    add("-j", "--jobs", metavar="N",
        help="runs at a time on each host, as GNU parallel takes it: 4, 50%%, +2 (one for each "
        "CPU thread)")
    add("-t", "--timeout", metavar="TIME", type=parse_time, default="1h",
        help="time limit of one run: 90, 15m, 2h; 0 for none (1h)")
    add("-S", "--sshlogin", metavar="HOSTS", action="append", default=[],
        help="run on these hosts, as GNU parallel takes them; they see the same files under the "
        "same paths, quorlin and quorlin-batch included")
    add("--sshloginfile", metavar="FILE", action="append", default=[],
        help="the hosts, one a line")
    add("--streams", metavar="FOLDER", type=folder_name,
        help="keep the elementary streams there (they are not written otherwise)")
    add("--quorlin", metavar="PROGRAM",
        help="the quorlin to run (that beside quorlin-batch, or in PATH)")
    add("-f", "--force", action="store_true", help="validate everything again")
    add("-r", "--retry", action="store_true", help="validate again what reached no verdict")
    add("--accept", metavar="FILE", help="findings that are known and do not count")
    add("--write-accept", metavar="FILE", help="write such a file of what was found")
    add("--advice", choices=("show", "fail"), default="show",
        help="whether advice on RFC 8216 fails an asset (show)")
    add("-0", "--null", action="store_true",
        help="names in lists end with a zero byte, not with a line")
    add("-n", "--dry-run", action="store_true", help="print what would be validated, and end")
    add("-q", "--quiet", action="store_true", help="no progress bar on standard error")
    add("--explain", metavar="ID", nargs=1, action=Explain,
        help="what a finding, a reason or an advice means, and how to fix it")
    add("-V", "--version", action="version", version=f"quorlin-batch {VERSION}")
    return parser
