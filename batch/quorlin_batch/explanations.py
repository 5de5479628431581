"""What a finding means and what to do about it, as quorlin-json --explain tells it."""

import re
import subprocess

from .advice_texts import EXPLANATIONS
from .text import printable


PARTS = re.compile(r" (?=(?:Rule|Fix): )")


def explain(program: str, ids: set[str]) -> dict[str, list[str]]:
    """Paragraphs for each id; none for one without an explanation."""
    explanations = {name: EXPLANATIONS[name] for name in ids if name in EXPLANATIONS}
    asked = sorted(ids - explanations.keys())
    if not asked:
        return explanations
    done = subprocess.run([program, "--explain", *asked], stdin=subprocess.DEVNULL,
                          capture_output=True, check=False)
    name = None
    for paragraph in done.stdout.decode("utf-8", "replace").split("\n\n"):
        if not paragraph.strip():
            continue
        head = paragraph.strip().split()[0].rstrip(":")
        if not paragraph.startswith(" ") and head in ids:  # with the text that is known already
            name = head
            explanations[name] = []
        elif name:
            text = printable(" ".join(paragraph.split()))
            explanations[name] += PARTS.split(text)
    return explanations
