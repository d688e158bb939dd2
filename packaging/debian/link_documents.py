"""Points links of documents in Markdown, where they are packaged, to the pages of the package of documents.

usage: link_documents.py PACKAGE-OF-PAGES PACKAGE...

A link to a file that the package has itself stays. A picture of the examples is looked for in examples/ beside the
document.
"""

import pathlib
import re
import sys

LINK = re.compile(r"\]\(([\w./-]+)(#[\w-]+)?\)")


def linked(text, folder, pages):
    def target(match):
        path, place = match[1], match[2] or ""
        if (folder / path).exists():
            return match[0]
        if path.startswith("../examples/") and (folder / path[3:]).exists():
            return f"]({path[3:]})"
        return f"]({pages}/{path.removesuffix('.md')}.html{place})"

    return LINK.sub(target, text)


def main():
    pages, *packages = sys.argv[1:]
    for package in packages:
        for path in pathlib.Path(f"debian/{package}/usr/share/doc/{package}").glob("*.md"):
            path.write_text(linked(path.read_text(encoding="utf-8"), path.parent, f"../{pages}/html"), encoding="utf-8")


main()
