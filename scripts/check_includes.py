#!/usr/bin/env python3
"""Checks who includes whom.

usage: check_includes.py [ROOT]

Each source of the tree belongs to a zone; the table below says what a zone may include. Everything
in quotes must be a file of this project, found by its name; everything in angle brackets is of the
standard library, or, where the table says so, of another library.
"""

import pathlib
import re
import sys

STANDARD = set("""
algorithm any array atomic bitset charconv chrono codecvt complex condition_variable deque exception
execution filesystem forward_list fstream functional future initializer_list iomanip ios iosfwd
iostream istream iterator limits list locale map memory memory_resource mutex new numeric optional
ostream queue random ratio regex scoped_allocator set shared_mutex sstream stack stdexcept streambuf
string string_view strstream system_error thread tuple type_traits typeindex typeinfo unordered_map
unordered_set utility valarray variant vector
cassert cctype cerrno cfenv cfloat cinttypes climits clocale cmath csetjmp csignal cstdarg cstddef
cstdint cstdio cstdlib cstring ctime cuchar cwchar cwctype
""".split())

# The order in which one prefix of the host may include another. The uid header stands alone.
HOST_ORDER = ["mem", "typ", "pnt", "omni", "atr", "cow", "cls_Uid", "nex", "cls", "g3d", "omu", "ftr"]

# Zone by folder; the first match counts. Files elsewhere (tests, bench, fuzz) are free.
ZONES = [
    (r"gsl/host/[^/]+/standin/", "standin"),
    (r"gsl/host/", "host"),
    (r"gsl/include/", "include"),
    (r"gsl/impl/kernel/", "kernel"),
    (r"gsl/impl/", "impl"),
    (r"gsl/persist/", "persist"),
    (r"sweep/", "sweep"),
    (r"model/", "model"),
    (r"tools/", "tools"),
    (r"examples/", "examples"),
]

# What each zone may include beside the standard library. "other libraries" allows any <header>;
# single headers are given by path.
MAY_INCLUDE = {
    "host": {"host"},
    "standin": {"host", "standin", "other libraries"},
    "include": {"host", "include"},
    "kernel": {"kernel", "gsl/include/gsl_Arithmetic.h"},
    "impl": {"host", "include", "kernel", "impl"},
    "persist": {"host", "include", "gsl/impl/kernel/Constants.h", "persist"},
    "sweep": {"host", "include", "sweep", "other libraries"},
    "model": {"host", "include", "model", "other libraries"},
    "tools": {"host", "include", "sweep", "model", "tools", "other libraries"},
    "examples": {"host", "include", "sweep", "model", "other libraries"},
}

INCLUDE = re.compile(r'^\s*#\s*include\s*(?:<([^>]+)>|"([^"]+)")', re.MULTILINE)
COMMENT = re.compile(r"/\*.*?\*/", re.DOTALL)


def zone_of(path):
    for pattern, zone in ZONES:
        if re.match(pattern, path):
            return zone
    return None


def host_rank(path):
    prefix, name = path.split("/")[2], path.split("/")[-1]
    return HOST_ORDER.index("cls_Uid" if name == "cls_Uid.h" else prefix)


class Tree:
    def __init__(self, root):
        self.root = pathlib.Path(root)
        self.sources = sorted(
            path.relative_to(self.root).as_posix()
            for folder in ("gsl", "sweep", "model", "tools", "examples")
            for path in (self.root / folder).rglob("*")
            if path.suffix in (".h", ".cpp")
        )

    def find(self, includer, name):
        """The project's file that `includer` reaches as "name": beside it, or unique in the tree."""
        beside = (pathlib.PurePosixPath(includer).parent / name).as_posix()
        if beside in self.sources:
            return [beside]
        return [s for s in self.sources if s == name or s.endswith("/" + name)]


def problems_of(tree, source):
    zone = zone_of(source)
    allowed = MAY_INCLUDE[zone]
    text = COMMENT.sub(lambda m: "\n" * m.group().count("\n"), (tree.root / source).read_text())
    for match in INCLUDE.finditer(text):
        where = f"{source}:{text.count(chr(10), 0, match.start(1) if match.group(1) else match.start(2)) + 1}"
        outside, inside = match.groups()
        if outside is not None:
            if outside not in STANDARD and "other libraries" not in allowed:
                yield f"{where}: <{outside}> is not of the C++17 standard library"
            continue
        found = tree.find(source, inside)
        if not found:
            yield f'{where}: "{inside}" is no file of this project'
        elif len(found) > 1:
            yield f'{where}: "{inside}" is ambiguous: {", ".join(found)}'
        else:
            yield from problems_between(where, source, zone, found[0])


def problems_between(where, source, zone, target):
    target_zone = zone_of(target)
    if target_zone not in MAY_INCLUDE[zone] and target not in MAY_INCLUDE[zone]:
        yield f"{where}: {zone} may not include {target} ({target_zone})"
    elif zone == "host" and host_rank(target) > host_rank(source):
        yield f"{where}: {target} comes later in the order of the prefixes ({' '.join(HOST_ORDER)})"
    elif zone == "standin" and target_zone == "standin" and target.split("/")[2] != source.split("/")[2]:
        yield f"{where}: {target} is private to the stand-in of another prefix"


def check(root):
    tree = Tree(root)
    unknown = [s for s in tree.sources if zone_of(s) is None]
    problems = [f"{s}: belongs to no zone of scripts/check_includes.py" for s in unknown]
    for source in tree.sources:
        if source not in unknown:
            problems.extend(problems_of(tree, source))
    return problems, len(tree.sources)


def main():
    root = sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).resolve().parent.parent
    problems, count = check(root)
    if count == 0:
        problems.append(f"{root}: no sources found")
    for problem in problems:
        print(problem, file=sys.stderr)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
