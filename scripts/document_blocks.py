#!/usr/bin/env python3
"""Writes the C++ blocks of documents to files that a test includes, so that they are compiled and run.

usage: document_blocks.py FOLDER TEST DOCUMENT...

Block N marked `cpp` alone in NAME.md becomes FOLDER/NAME_N.inc, with _ for each - in NAME. Fails unless the source TEST
includes every block, as BLOCK(NAME_N), and nothing else.
"""

import pathlib
import re
import sys

from document_commands import BLOCK


def blocks_of(path):
    """Yields the name and the text of each C++ block that is not the content of a file."""
    texts = [text for mark, text in BLOCK.findall(path.read_text(encoding="utf-8")) if mark.split() == ["cpp"]]
    for number, text in enumerate(texts, 1):
        yield f"{path.stem.replace('-', '_')}_{number}", text


def main():
    if len(sys.argv) < 4:
        print(__doc__, file=sys.stderr)
        return 2
    folder, test = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
    blocks = dict(block for name in sys.argv[3:] for block in blocks_of(pathlib.Path(name)))
    included = set(re.findall(r"^#include BLOCK\((\w+)\)$", test.read_text(encoding="utf-8"), re.MULTILINE))
    for name in sorted(blocks.keys() ^ included):
        wrong = "is not included" if name in blocks else "is included, but no document has it"
        print(f"{test}: the block {name} {wrong}", file=sys.stderr)
    if blocks.keys() != included:
        return 1
    folder.mkdir(parents=True, exist_ok=True)
    for name, text in blocks.items():
        path = folder / f"{name}.inc"
        if not path.exists() or path.read_text(encoding="utf-8") != text:
            path.write_text(text, encoding="utf-8")
    return 0


if __name__ == "__main__":
    sys.exit(main())
