#!/usr/bin/env python3
"""Checks that no function body is longer than 60 lines.

usage: check_bodies.py [ROOT]

The length of a body is the number of lines between the line of its opening brace and the line of its closing
brace. A lambda or a local class counts as part of the function that holds it; at namespace scope a lambda has
a body of its own. Comments, strings, initialisers, classes and namespaces do not count, and every branch of an #if
is read as if it were alone.
"""

import copy
import pathlib
import re
import sys

import house_check

FOLDERS = ("gsl", "sweep", "exact", "mesh", "model", "records", "tools", "view", "python")
LONGEST = 60
# Bodies that may be longer for now: (file, function). An entry that is not needed is an error.
EXCEPTIONS = set()

# Matches the parts that are blanked before braces are counted. A ' between digits separates them.
IGNORED = re.compile(
    r"""(?P<raw>\bR"(?P<mark>[^()\\\s]{0,16})\(.*?\)(?P=mark)")
      | (?P<text>"(?:\\.|[^"\\\n])*")
      | (?P<number>\b\d[\w.]*(?:'[\w.]+)+)
      | (?P<character>'(?:\\.|[^'\\\n])+')
      | (?P<comment>//(?:\\\n|[^\n])*|/\*.*?\*/)""", re.VERBOSE | re.DOTALL)
DIRECTIVE = re.compile(r"^[ \t]*#[ \t]*(\w+)(?:\\\n|[^\n])*", re.MULTILINE)
TOKEN = re.compile(r"[(){};\n]|\x00(\w+)\x00")
CONTAINER = re.compile(r"\b(?:namespace|class|struct|union|enum|extern \"\")(?![\w(])")
OPERATOR = re.compile(r"\boperator\s*(?:\(\)|[^\s\w(]+)")
NAME = re.compile(r"(operator\s*(?:\(\)|[^\s(]+)|~?\w+(?:::~?\w+)*)\s*$")


def blanked(text):
    """Returns the text without the parts whose braces do not count. The lines stay."""
    def ignored(match):
        kept = match.group(0)
        lines = "\n" * kept.count("\n")
        return '""' + lines if match.group("raw") or match.group("text") else lines or " "

    def directive(match):
        kind = match.group(1)
        marked = f"\x00{kind}\x00" if kind in ("if", "ifdef", "ifndef", "elif", "else", "endif") else ""
        return marked + "\n" * match.group(0).count("\n")

    return DIRECTIVE.sub(directive, IGNORED.sub(ignored, text))


def without(pattern, replacement, head):
    """Returns the head after every match of the pattern was replaced, from the inside out."""
    replaced = 1
    while replaced:
        head, replaced = re.subn(pattern, replacement, head)
    return head


def outside_brackets(head):
    """Returns the head without attributes, template arguments and what is in round brackets."""
    head = without(r"\([^()]*\)", "\x01", OPERATOR.sub("operator", head))
    return without(r"<[^<>;{}]*>", " ", re.sub(r"\[\[.*?\]\]", " ", head))


def kind_of(head):
    """Returns what a brace after `head` opens: a container, a function, or an initialiser."""
    plain = outside_brackets(head)
    assigned = "=" in plain
    if assigned:
        return "function" if re.search(r"\[[^\[\]]*\]\s*(?:\x01[^=]*)?$", plain) else "initialiser"
    if CONTAINER.search(plain) and "\x01" not in re.sub(r"alignas\s*\x01", "", plain):
        return "container"
    if "\x01" not in plain:
        return "initialiser"
    members = re.search(r"\x01[^:\x01]*[^:]:(?!:)", plain)
    return "initialiser" if members and re.search(r"\w\s*$", plain) else "function"


def name_of(head):
    match = NAME.search(head.split("(")[0]) if "operator()" not in head else None
    return match.group(1) if match else "operator()" if "operator()" in head else "a lambda"


def bodies_of(text):
    """Returns (name, line of the opening brace, lines between the braces) of every function body, and whether
    all braces have a partner."""
    text = blanked(text)
    found, line, position = [], 1, 0
    # Open braces as (kind, name, line), the head before the next brace, and open round brackets.
    state = {"open": [], "head": "", "round": 0}
    branches, sound = [], True
    for token in TOKEN.finditer(text):
        state["head"] += text[position:token.start()]
        position = token.end()
        mark, directive = token.group(0), token.group(1)
        if directive:
            if directive.startswith("if"):
                branches.append(copy.deepcopy(state))
            elif directive == "endif":
                sound = bool(branches) and sound
                branches = branches[:-1]
            elif branches:
                state = copy.deepcopy(branches[-1])
            continue
        if mark == "\n":
            line += 1
            state["head"] += " "
        elif mark in "()":
            state["round"] += 1 if mark == "(" else -1
            state["head"] += mark
        elif mark == "{":
            inside = any(kind != "container" for kind, _, _, _ in state["open"]) or state["round"]
            kind = "inner" if inside else kind_of(re.sub(r"\b(?:public|protected|private)\s*:", " ", state["head"]))
            state["open"].append((kind, name_of(state["head"]), line, state["head"]))
            state["head"] = "" if kind in ("container", "function") else state["head"] + "{"
        elif mark == "}":
            if not state["open"]:
                return found, False
            kind, name, start, head = state["open"].pop()
            if kind == "function":
                found.append((name, start, max(0, line - start - 1)))
            # After an initialiser the same statement goes on: a constructor has several.
            state["head"] = head + "\x02" if kind in ("initialiser", "inner") else ""
        elif mark == ";" and not state["round"]:
            state["head"] = ""
    return found, sound and not state["open"] and not branches


def sources(root):
    for folder in FOLDERS:
        yield from sorted(path for path in (root / folder).rglob("*") if path.suffix in (".h", ".cpp"))


def check(root, exceptions):
    root = pathlib.Path(root)
    problems, count, needed = [], 0, set()
    for path in sources(root):
        file = path.relative_to(root).as_posix()
        bodies, sound = bodies_of(path.read_text())
        count += len(bodies)
        if not sound:
            problems.append(f"{file}: the braces do not match")
        for name, line, length in bodies:
            if length <= LONGEST:
                continue
            if (file, name) in exceptions:
                needed.add((file, name))
            else:
                problems.append(f"{file}:{line}: the body of {name} has {length} lines, but at most {LONGEST} are allowed")
    problems += [f"{file}: {name} no longer needs an exception" for file, name in sorted(exceptions - needed)]
    return problems, count


if __name__ == "__main__":
    sys.exit(house_check.run(lambda root: check(root, EXCEPTIONS), "no function bodies found"))
