#!/usr/bin/env python3
"""Prints the shell commands of documents as a script that types them, one after the other.

usage: document_commands.py DOCUMENT...

A fenced block marked `sh` holds commands, one to a line (a backslash continues it); one marked with a
language and a path, like `cpp app/main.cpp`, is the content of that file. Everything happens in the
working folder, in the order of the documents. Before a command runs, the script prints it after `$ `;
afterwards it prints the seconds that the command took. The first command that fails ends the script.
"""

import pathlib
import re
import shlex
import sys

BLOCK = re.compile(r"^```([^\n`]*)\n(.*?)^```$", re.MULTILINE | re.DOTALL)

PROLOGUE = """set -euo pipefail
typed() {
  local start=$SECONDS
  printf '$ %s\\n' "$1"
  eval "$1"
  printf '$ # %d s\\n' $((SECONDS - start))
}
"""


def commands_in(block):
    return [line for line in block.replace("\\\n", " ").splitlines() if line.strip()]


def steps_of(document):
    """Yields pairs: a command and None, or a path and the content of the file."""
    for mark, block in BLOCK.findall(document):
        words = mark.split()
        if words == ["sh"]:
            for command in commands_in(block):
                yield command, None
        elif len(words) == 2:
            yield words[1], block


def script_of(documents):
    """Returns the script, and the number of commands that it types."""
    lines, count = [PROLOGUE], 0
    for document in documents:
        for text, content in steps_of(document):
            path = shlex.quote(text)
            if content is None:
                lines.append(f"typed {path}\n")
                count += 1
            else:
                lines.append(f'mkdir -p "$(dirname {path})"\nprintf %s {shlex.quote(content)} >{path}\n')
    return "".join(lines), count


def main():
    if len(sys.argv) < 2:
        print(__doc__, file=sys.stderr)
        return 2
    for name in sys.argv[1:]:
        if script_of([pathlib.Path(name).read_text()])[1] == 0:
            print(f"{name}: no block of commands (```sh)", file=sys.stderr)
            return 1
    print(script_of([pathlib.Path(name).read_text() for name in sys.argv[1:]])[0], end="")
    return 0


if __name__ == "__main__":
    sys.exit(main())
