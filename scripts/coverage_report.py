"""Reports the lines and branches that the tests reach, from the counts that `llvm-cov export` writes as JSON.

Started by scripts/coverage, as `coverage_report.py COUNTS UNREACHED MISSING ROOM...`. UNREACHED lists what no test can
reach, and MISSING gets what no test reaches and the list does not name.
"""

import json
import pathlib
import re
import sys
from dataclasses import dataclass, field

# The least part of a room, in percent.
LINES, BRANCHES = 99, 97
ENTRY = ["file", "line", "never", "why"]
# Blank lines, comments and braces are not code.
NO_CODE = re.compile(r"\s*([{}();,\s]*|} while .*|namespace .*)(//.*)?")


class Failed(Exception):
    """What is wrong, in one line."""


@dataclass(frozen=True)
class Way:
    """Something to reach: a line, or one of the two ways of a condition."""
    file: str
    line: int
    column: int
    text: str  # of the line, without its indentation
    never: str  # "reached", or such as "a < b is true"


@dataclass
class Counts:
    """Which lines and ways of branches were taken, by Way."""
    lines: dict = field(default_factory=dict)
    branches: dict = field(default_factory=dict)


class Sources:
    """The lines of the files of the rooms."""

    def __init__(self, root, rooms):
        self.root, self.rooms, self.lines = root, rooms, {}

    def name(self, filename):
        """Returns the name of a file of a room, otherwise nothing."""
        path = pathlib.Path(filename)
        name = path.relative_to(self.root).as_posix() if path.is_relative_to(self.root) else ""
        if name.partition("/")[0] not in self.rooms:
            return None
        if name not in self.lines:
            self.lines[name] = path.read_text().split("\n")
        return name

    def text(self, name, line):
        return self.lines[name][line - 1].strip()

    def between(self, name, begin_line, begin, end_line, end):
        lines = self.lines[name][begin_line - 1:end_line]
        lines[-1] = lines[-1][:end - 1]
        lines[0] = lines[0][begin - 1:]
        return " ".join(line.strip() for line in lines)


def reached_lines(regions, lines):
    """Returns {line: was it reached} of a function in one file: a region that begins in the line was entered, or the
    innermost region at its first word was."""
    found = {}
    for line in range(regions[0].begin[0], max(region.end for region in regions)[0] + 1):
        text = lines[line - 1]
        first = (line, len(text) - len(text.lstrip()) + 1)
        around = [region for region in regions if region.begin <= first < region.end]
        inner = max(around, key=lambda region: (region.begin, tuple(-k for k in region.end)), default=None)
        starting = [region.count for region in regions if region.begin[0] == line and region.kind == CODE]
        if not NO_CODE.fullmatch(text) and (inner is None or inner.kind != SKIPPED) and (inner or starting):
            found[line] = max([*starting, inner.count if inner else 0]) > 0
    return found


@dataclass(frozen=True)
class Region:
    begin: tuple
    end: tuple
    count: int
    file: int
    kind: int


# Kinds of regions: what a macro stands for counts as code, and the third is between a condition and its statement.
CODE, SKIPPED = 0, 2


def is_for_the_compiler(regions, lines):
    """Whether a function is constexpr and was never called while a program ran."""
    line, column = regions[0].begin
    declared = [lines[line - 1][:column - 1]]
    while line > 1 and (before := lines[line - 2].strip()) and before[-1] not in ";{}>":
        declared.append(before)
        line -= 1
    return regions[0].count == 0 and any(re.search(r"\bconstexpr\b", text) for text in declared)


def functions(exported, sources):
    """Yields (name of the file, regions, branches) of each function in each of its files in a room, but not of those that
    only the compiler runs."""
    for function in exported["data"][0]["functions"]:
        for index, filename in enumerate(function["filenames"]):
            if name := sources.name(filename):
                regions = [Region((r[0], r[1]), (r[2], r[3]), r[4], r[5], r[7] if r[7] != 1 else CODE)
                           for r in function["regions"] if r[5] == index]
                regions.sort(key=lambda region: (region.begin, tuple(-k for k in region.end)))
                if regions and not is_for_the_compiler(regions, sources.lines[name]):
                    yield name, regions, [branch for branch in function["branches"] if branch[6] == index]


def count_lines(found, sources, counts):
    """Adds the lines. The instantiations of a template are one function, and lines of a lambda are its own."""
    extents = {}
    for name, regions, _ in found:
        ways = extents.setdefault((name, regions[0].begin, tuple(-k for k in regions[0].end)), {})
        for line, reached in reached_lines(regions, sources.lines[name]).items():
            ways[line] = ways.get(line, False) or reached
    for (name, begin, _), ways in sorted(extents.items(), key=lambda item: item[0]):
        for line, reached in ways.items():
            way = Way(name, line, 0, sources.text(name, line), "reached")
            ways_of_room = counts[name.partition("/")[0]].lines
            ways_of_room[way] = reached or (line == begin[0] and ways_of_room.get(way, False))


def count_branches(found, sources, counts):
    """Adds both ways of each condition. A condition of a template takes a way where any instantiation does. One that
    was evaluated and went no way is a constant, and does not count; nor does the way past every case of a switch
    without a default, which names every value of its type."""
    for name, regions, branches in found:
        evaluated = {(region.begin, region.end) for region in regions if region.count > 0}
        for begin_line, begin, end_line, end, taken, not_taken, *_ in branches:
            if taken + not_taken == 0 and ((begin_line, begin), (end_line, end)) in evaluated:
                continue
            condition = sources.between(name, begin_line, begin, end_line, end)
            if sources.lines[name][begin_line - 1][:begin - 1].endswith("switch ("):
                continue
            ways = counts[name.partition("/")[0]].branches
            for value, number in (("true", taken), ("false", not_taken)):
                way = Way(name, begin_line, begin, sources.text(name, begin_line), f"{condition} is {value}")
                ways[way] = ways.get(way, False) or number > 0


def count(exported, root, rooms):
    """Returns the Counts of each room."""
    counts = {room: Counts() for room in rooms}
    sources = Sources(root, rooms)
    found = list(functions(exported, sources))
    count_lines(found, sources, counts)
    count_branches(found, sources, counts)
    return counts


def read_unreached(path):
    """Returns the (file, line, never) that no test can reach. An entry has lines such as `file: ...`, and a `never:`
    for each way that its reason holds for."""
    found = []
    text = re.sub(r"^#.*\n", "", path.read_text(), flags=re.MULTILINE).strip()
    for block in re.split(r"\n\s*\n", text) if text else []:
        pairs = [(key, value.strip()) for key, _, value in (line.partition(":") for line in block.splitlines())]
        names = [key for key, _ in pairs]
        if [*dict.fromkeys(names)] != ENTRY or len(names) - names.count("never") != 3 or not all(v for _, v in pairs):
            raise Failed(f"{path.name}: an entry has the lines {', '.join(ENTRY)}, each with a text:\n{block}")
        values = dict(pairs)
        found += [(values["file"], values["line"], value) for key, value in pairs if key == "never"]
    return found


def take_listed(counts, unreached):
    """Counts the listed ways as reached. An entry of something that is reached, or that is no longer there, fails."""
    left = set(unreached)
    for one in counts.values():
        for ways in (one.lines, one.branches):
            for way in [way for way, reached in ways.items() if not reached]:
                if (entry := (way.file, way.text, way.never)) in unreached:
                    ways[way] = True
                    left.discard(entry)
    stale = [f"{file}: {line}\n    never: {never}" for file, line, never in unreached if (file, line, never) in left]
    if stale:
        raise Failed("listed, but reached or no longer there:\n  " + "\n  ".join(stale))


def missing(counts):
    ways = [way for one in counts.values() for part in (one.lines, one.branches)
            for way, reached in part.items() if not reached]
    return [f"{way.file}:{way.line}: never {way.never}"
            for way in sorted(ways, key=lambda way: (way.file, way.line, way.column, way.never))]


def percent(ways):
    return 100 * sum(ways.values()) / len(ways) if ways else 100


def report(counts):
    """Prints a row for each room. Returns what is too low."""
    low = []
    print("| room | lines | reached | branches | taken |\n|---|---|---|---|---|")
    for room, one in counts.items():
        if not one.lines:
            low.append(f"no line of {room}/ was counted")
            continue
        lines, branches = percent(one.lines), percent(one.branches)
        print(f"| `{room}/` | {len(one.lines)} | {lines:.1f} % | {len(one.branches)} | {branches:.1f} % |")
        if lines < LINES:
            low.append(f"{room}/: {lines:.2f} % of the lines are reached; expected at least {LINES} %")
        if branches < BRANCHES:
            low.append(f"{room}/: {branches:.2f} % of the branches are taken; expected at least {BRANCHES} %")
    return low


def main(arguments, root=pathlib.Path(__file__).resolve().parent.parent):
    exported, unreached, written, *rooms = arguments
    counts = count(json.loads(pathlib.Path(exported).read_text()), root, rooms)
    problems = []
    try:
        take_listed(counts, read_unreached(pathlib.Path(unreached)))
    except Failed as failure:
        problems.append(f"{unreached}: {failure}")
    pathlib.Path(written).write_text("".join(line + "\n" for line in missing(counts)))
    problems += report(counts)
    for problem in problems:
        print(problem, file=sys.stderr)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
