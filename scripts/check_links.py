#!/usr/bin/env python3
"""Checks the links of HTML pages: each file that a page names exists, and each place within a page too.

usage: check_links.py FOLDER

Links to other hosts are not followed. Of documents in Markdown the files are looked for, not the places.
"""

import html.parser
import pathlib
import re
import sys
import urllib.parse


# A link of Markdown, outside code of one line.
LINK = re.compile(r"`[^`\n]*`|\]\(([^)\s]+)\)")


class Document:
    """A document in Markdown."""

    def __init__(self, text):
        self.links = [link for link in LINK.findall(re.sub(r"^```.*?^```$", "", text, flags=re.M | re.S)) if link]


class Page(html.parser.HTMLParser):
    def __init__(self, text):
        super().__init__()
        self.places, self.links = set(), []
        self.feed(text)

    def handle_starttag(self, tag, attributes):
        for name, value in attributes:
            if name == "id" or (tag == "a" and name == "name"):
                self.places.add(value)
            elif name in ("href", "src") or (tag == "object" and name == "data"):
                self.links.append(value or "")


def problems(folder):
    pages = {path.resolve(): kind(path.read_text(encoding="utf-8"))
             for kind, pattern in ((Page, "*.html"), (Document, "*.md")) for path in sorted(folder.rglob(pattern))}
    for path, page in pages.items():
        for link in page.links:
            parts = urllib.parse.urlsplit(link)
            if parts.scheme or parts.netloc:
                continue
            target = (path.parent / urllib.parse.unquote(parts.path)).resolve() if parts.path else path
            name = path.relative_to(folder.resolve())
            if not target.exists():
                yield f"{name}: the link to {link} leads nowhere"
            elif parts.fragment and isinstance(pages.get(target), Page) \
                    and urllib.parse.unquote(parts.fragment) not in pages[target].places:
                yield f"{name}: {link} names a place that the page does not have"
    if not pages:
        yield f"{folder}: no page"


def main():
    if len(sys.argv) != 2:
        print(__doc__, file=sys.stderr)
        return 2
    found = list(problems(pathlib.Path(sys.argv[1])))
    for problem in found:
        print(problem, file=sys.stderr)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
