"""The page of one asset: a few lines of HTML with its data; style and script are the batch's."""

import os

from .reports import PAGE

SCRIPTS = ("common", "standing", "explanations", "charts", "timeline", "asset")
# The policy: a page that is opened from the disk has no origin of its own.
SHELL = """<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta http-equiv="Content-Security-Policy" content="default-src 'none'; style-src 'self' file: 'unsafe-inline'; script-src 'self' file:">
<title>{title}</title>
<link rel="stylesheet" href="{pages}style.css">
<link rel="stylesheet" href="{pages}asset.css">
</head>
<body>
<noscript><p>This page needs JavaScript. report.txt and result.json, beside it, hold the same results.</p></noscript>
<script type="application/json" id="data">{data}</script>
{scripts}</body>
</html>
"""


def store_asset_page(reports: str, folder: str, asset: str, result: str, rows: str) -> None:
    """`result` and `rows` are JSON; what HTML gives a meaning is taken out of it."""
    pages = "../" * (os.path.relpath(folder, reports).count("/") + 1) + "pages/"
    page = SHELL.format(title=harmless_text(asset), pages=pages,
                        data=harmless(result[:-1] + ',"rows":' + rows + "}"),
                        scripts="".join(f'<script src="{pages}{name}.js"></script>\n'
                                        for name in SCRIPTS))
    with open(os.path.join(folder, PAGE), "wb", buffering=0) as file:
        file.write(page.encode())


def harmless(text: str) -> str:
    """JSON in ASCII without the characters that mean something to HTML."""
    return text.replace("&", "\\u0026").replace("<", "\\u003c").replace(">", "\\u003e")


def harmless_text(text: str) -> str:
    return text.replace("&", "&amp;").replace("<", "&lt;").replace(">", "&gt;")
