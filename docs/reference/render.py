#!/usr/bin/env python3
"""Renders the Markdown documents of the project as pages beside the reference, for a browser.

usage: render.py FOLDER

FOLDER holds the pages of Doxygen in reference/. docs/ becomes FOLDER itself, with docs/index.md as its front page; the
documents of the root folder are placed beside it. Links between documents lead to pages, and what else a document
links to is copied, or listed where it is a folder. Needs python3-markdown-it.
"""

import html
import os
import pathlib
import re
import shutil
import sys
import urllib.parse

from markdown_it import MarkdownIt

ROOT = pathlib.Path(__file__).resolve().parents[2]

PAGE = """<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>{title} - gsl_geometry</title>
<link rel="stylesheet" href="{style}">
</head>
<body>
<nav><a href="{front}">gsl_geometry</a> <a href="{reference}">Reference</a></nav>
<main>
{body}</main>
</body>
</html>
"""


def slug(title, taken):
    """Returns the name of a heading's place, as the usual viewers of Markdown form it."""
    name = re.sub(r"[^\w\- ]", "", title.lower()).replace(" ", "-")
    count = taken.get(name, 0)
    taken[name] = count + 1
    return f"{name}-{count}" if count else name


def place_of(path):
    """Returns where a file of the project is placed, below the folder of the pages."""
    parts = pathlib.PurePosixPath(path).parts
    if parts[0] == "docs":
        parts = parts[1:]
    place = pathlib.PurePosixPath(*parts)
    return place.with_suffix(".html") if place.suffix == ".md" else place


class Site:
    """The pages, and the files and folders that they link to."""

    def __init__(self, root, out):
        self.root, self.out = root.resolve(), out
        self.linked = set()
        self.parser = MarkdownIt("commonmark").enable("table")

    def documents(self):
        found = [path for folder in (self.root, self.root / "docs", self.root / "docs/decisions")
                 for path in sorted(folder.glob("*.md"))]
        return [path.relative_to(self.root).as_posix() for path in found]

    def link(self, source, url):
        """Returns the link from the page of a document, and remembers what must be there."""
        parts = urllib.parse.urlsplit(url)
        if parts.scheme or parts.netloc or not parts.path:
            return url
        target = (self.root / source).parent.joinpath(urllib.parse.unquote(parts.path)).resolve()
        if not target.exists() or self.root not in target.parents:
            raise ValueError(f"{source}: the link to {url} leads nowhere")
        name = target.relative_to(self.root).as_posix()
        # The pages of docs/reference/ and its drawings are Doxygen's.
        if target.suffix != ".md" and not name.startswith("docs/reference"):
            self.linked.add(name)
        place = place_of(name) / "index.html" if target.is_dir() else place_of(name)
        path = os.path.relpath(place, place_of(source).parent)
        return urllib.parse.urlunsplit(("", "", urllib.parse.quote(path), "", parts.fragment))

    def page(self, source, text):
        """Returns the page of a document."""
        tokens, taken, title = self.parser.parse(text), {}, None
        for k, token in enumerate(tokens):
            if token.type == "heading_open":
                words = "".join(part.content for part in tokens[k + 1].children)
                token.attrSet("id", slug(words, taken))
                title = title or words
            for part in token.children or ():
                for name in ("href", "src"):
                    if part.attrGet(name) is not None:
                        part.attrSet(name, self.link(source, part.attrGet(name)))
        body = self.parser.renderer.render(tokens, self.parser.options, {})
        return self.framed(place_of(source), title or source, body)

    @staticmethod
    def framed(place, title, body):
        def to(target):
            return os.path.relpath(target, place.parent)
        return PAGE.format(title=html.escape(title), body=body, style=to("pages.css"), front=to("index.html"),
                           reference=to("reference/index.html"))

    def listing(self, folder):
        """Returns the page of a folder: documents by their titles, other files by their names."""
        rows = []
        for path in sorted((self.root / folder).iterdir()):
            name = path.relative_to(self.root).as_posix()
            if path.name.startswith((".", "__")):
                continue
            shown = path.name
            if path.suffix == ".md":
                shown = path.read_text(encoding="utf-8").splitlines()[0].lstrip("# ")
            elif path.is_dir():
                self.linked.add(name)
            target = os.path.relpath(place_of(name), place_of(folder)) + ("/index.html" if path.is_dir() else "")
            rows.append(f'<li><a href="{urllib.parse.quote(target)}">{html.escape(shown)}</a></li>\n')
        body = f"<h1>{html.escape(folder)}</h1>\n<ul>\n{''.join(rows)}</ul>\n"
        return self.framed(place_of(folder) / "index.html", folder, body)

    def write(self, place, text):
        path = self.out / place
        path.parent.mkdir(parents=True, exist_ok=True)
        if path.exists():
            raise ValueError(f"{place}: two files have this place")
        path.write_text(text, encoding="utf-8")

    def copy(self, name):
        (self.out / place_of(name)).parent.mkdir(parents=True, exist_ok=True)
        shutil.copyfile(self.root / name, self.out / place_of(name))

    def make(self):
        for source in self.documents():
            self.write(place_of(source), self.page(source, (self.root / source).read_text(encoding="utf-8")))
        done = set()
        while self.linked - done:
            name = min(self.linked - done)
            done.add(name)
            if not (self.root / name).is_dir():
                self.copy(name)
                continue
            self.write(place_of(name) / "index.html", self.listing(name))
            for path in sorted((self.root / name).iterdir()):
                if path.is_file() and path.suffix != ".md":
                    self.copy(path.relative_to(self.root).as_posix())
        shutil.copyfile(self.root / "docs/reference/pages.css", self.out / "pages.css")


def main():
    if len(sys.argv) != 2:
        print(__doc__, file=sys.stderr)
        return 2
    try:
        Site(ROOT, pathlib.Path(sys.argv[1])).make()
    except ValueError as error:
        print(error, file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
