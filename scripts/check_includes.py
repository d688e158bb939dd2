#!/usr/bin/env python3
"""Checks every include by the table of rooms below.

usage: check_includes.py [ROOT]
       check_includes.py --table

Every source of the tree belongs to a room. A room may include itself, the C++17 standard library and the
entries of its row. Headers of this project are found by their names, in quotes and in angle brackets alike, and
are included in quotes; only examples/ and tests/consumer/ use angle brackets, as users do.

--table prints the table as it is in CONTRIBUTING.md, where a test compares it.
"""

import pathlib
import posixpath
import re
import sys
from dataclasses import dataclass

import house_check

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

# Other libraries by the headers that they are known by.
LIBRARIES = {
    "POSIX": r"(sys/(?!single_threaded).+|dlfcn|fcntl|poll|pthread|spawn|stdlib|unistd)\.h",
    "GNU C library": r"sys/single_threaded\.h",
    "SSE2": r"emmintrin\.h",
    "fast_float": r"fast_float/.+",
    "Assimp": r"assimp/.+",
    "CLI11": r"CLI/.+",
    "nlohmann-json": r"nlohmann/.+",
    "pybind11": r"pybind11/.+",
    "SQLite": r"sqlite3\.h",
    "Cairo": r"cairo(-\w+)?\.h",
    "any library": r".+",
}

# The order in which one prefix of the host may include another. The uid header comes alone, before nex.
PREFIXES = pathlib.Path(__file__).resolve().parent.parent / "gsl/host/prefixes.txt"
HOST_ORDER = [line for line in PREFIXES.read_text().split("\n") if line and not line.startswith("#")]
HOST_ORDER.insert(HOST_ORDER.index("nex"), "cls_Uid")

PUBLIC = "gsl/include/, gsl/host/"
RECORDS = "records/include/"
MODEL = "model/include/"
VALUES = "gsl/include/gsl_Arithmetic.h, gsl/include/gsl_Matrix.h"
# Every room that is not for tests, benchmarks, fuzzing or examples.
PRODUCT = "every room of the product"
OUTSIDE = ("tests/", "bench/", "fuzz/", "examples/")


@dataclass(frozen=True)
class Room:
    folder: str  # * is any one name
    holds: str
    may_include: str  # rooms, headers and libraries; a remark in brackets is for people
    as_users_do: bool = False  # headers of this project in angle brackets


# A file belongs to the room with the longest folder that its path begins with.
ROOMS = [
    Room("tools/", "command-line programs: parse, call, print",
         "tools/support/, gsl/include/, mesh/, mesh/readers/MeshReadAssimp.h, records/include/, model/include/, sweep/, view/, "
         "CLI11, POSIX"),
    Room("tools/support/",
         "inputs and outputs of programs: directions, poses, report, records, progress, help; numbers as text",
         "gsl/include/, mesh/, records/include/, model/include/, sweep/, view/, CLI11, fast_float, nlohmann-json, POSIX"),
    Room("python/", "the Python module: arrays in, arrays out",
         "gsl/include/, mesh/, sweep/, tools/support/EvenDirections.h, pybind11"),
    Room("view/", "pictures and the viewer page, drawn from answers and arrays",
         "gsl/include/, mesh/, sweep/, nlohmann-json, POSIX, Cairo"),
    Room("sweep/", "the engine: bodies and pairs, the searches for first and last contacts, patches and clearances, growing bodies, the test for solids, the exact contact of two triangles",
         f"exact/, {VALUES}, gsl/include/gsl_Point.h (to move corners as a matrix does), POSIX (pages of large arrays), "
         "SSE2"),
    Room("mesh/", "the mesh; reading and writing files, by format; both ends of the import program",
         f"mesh/readers/, mesh/writers/, exact/, {VALUES}, POSIX"),
    Room("mesh/readers/", "one reader per mesh format, and their shared parts",
         f"mesh/, {VALUES}, fast_float, Assimp"),
    Room("mesh/writers/", "one writer per mesh format, and their shared parts", f"mesh/, {VALUES}"),
    Room("exact/", "exact signs, expansions, ratios", "gsl/include/gsl_Arithmetic.h"),
    Room("gsl/include/", "public headers, one per class or family", "gsl/host/"),
    Room("gsl/impl/", "one source per class or family", f"{PUBLIC}, gsl/impl/kernel/, gsl/impl/wide/"),
    Room("gsl/impl/kernel/", "geometry on bare coordinates: inline functions, no entity, no host",
         "gsl/include/gsl_Arithmetic.h"),
    Room("gsl/impl/wide/",
         "code for vector registers: lanes, solver, labelling, distances of many, their choice at run time",
         "gsl/host/, gsl/impl/kernel/Constants.h, gsl/impl/kernel/SegmentDistanceBounds.h, "
         "gsl/impl/kernel/SegmentSweepBounds.h, gsl/impl/kernel/TriangleDistanceBounds.h, "
         "gsl/impl/kernel/TriangleSweepBounds.h"),
    Room("gsl/persist/", "module start-up, type table, registration, persistent arrays",
         f"{PUBLIC}, gsl/impl/kernel/Constants.h"),
    Room("gsl/host/", "headers of the host, one folder per prefix; each includes earlier prefixes only",
         "GNU C library (whether the process has one thread)"),
    Room("gsl/host/*/standin/", "the implementation that is used without a host",
         "gsl/host/, records/include/, POSIX"),
    Room("records/", "the byte form of records: its frame, its checksum; the store's body; files",
         "records/include/, POSIX"),
    Room("model/", "saved models in a database: its tables, records in memory, what a transaction adds and removes",
         f"model/include/, {PUBLIC}, {RECORDS}, POSIX, SQLite"),
    Room("model/include/", "the model: transactions, and reading by name", f"{PUBLIC}, {RECORDS}"),
    Room("records/include/", "the reader and the writer of records; the store of records in memory", ""),
    Room("tests/", "mirrors the rooms above: one test file per source file",
         f"{PRODUCT}, tests/support/, tests/reference/, tests/host_conformance/, any library"),
    Room("tests/support/", "shared parts of tests: samples, shapes, random numbers", f"{PRODUCT}, any library"),
    Room("tests/reference/", "second implementations: transcriptions, oracles, rationals",
         f"{PRODUCT}, tests/support/, any library"),
    Room("tests/host_conformance/", "the suite that a vendor of a host runs, and the adapter of the stand-in",
         f"{PUBLIC}, {RECORDS}", True),
    Room("tests/external_host/", "a second host: other classes under the names of the host's headers",
         "gsl/include/ (the test of memory), tests/host_conformance/ (the adapter)"),
    Room("tests/consumer/", "projects that use the library, installed or as sources",
         f"{PUBLIC}, {RECORDS}, {MODEL}, sweep/, POSIX", True),
    Room("bench/", "benchmarks of the library and of other libraries", f"{PRODUCT}, tests/reference/, tests/support/RandomNumbers.h, tests/support/TemporaryFolder.h, any library"),
    Room("fuzz/", "fuzz targets and their seeds", f"{PRODUCT}, tests/reference/, tests/support/, nlohmann-json, POSIX"),
    Room("examples/", "programs as users write them", f"{PUBLIC}, {RECORDS}, {MODEL}, mesh/, sweep/", True),
]

# The second host has headers of the same names as gsl/host/. Each file sees one of the two hosts.
HOSTS = ("gsl/host/", "tests/external_host/")

INCLUDE = re.compile(r'^\s*#\s*include\s*(?:<([^>]+)>|"([^"]+)")', re.MULTILINE)
COMMENT = re.compile(r"/\*.*?\*/", re.DOTALL)


def entries_of(room):
    return [entry for entry in room.may_include.split(", ") if entry]


def allowed(room):
    """Returns the rooms, headers and libraries of a row without the remarks."""
    names = [entry.split(" (")[0] for entry in entries_of(room)]
    if PRODUCT in names:
        names += [other.folder for other in ROOMS if not other.folder.startswith(OUTSIDE)]
    return names


def room_of(path):
    rooms = [r for r in ROOMS if re.match(re.escape(r.folder).replace(r"\*", "[^/]+"), path)]
    return max(rooms, key=lambda room: len(room.folder), default=None)


def host_rank(path):
    prefix, name = path.split("/")[2], path.split("/")[-1]
    return HOST_ORDER.index("cls_Uid" if name == "cls_Uid.h" else prefix)


def table():
    """Yields the lines of the table in CONTRIBUTING.md."""
    yield "| room | holds | may include |"
    yield "|---|---|---|"
    for room in ROOMS:
        names = [re.sub(r"^[^ ]*[/.][^ ]*", lambda m: f"`{m.group()}`", entry) for entry in entries_of(room)]
        yield f"| `{room.folder}` | {room.holds} | {', '.join(names)} |".replace("  ", " ")


class Tree:
    def __init__(self, root):
        self.root = pathlib.Path(root)
        self.sources = sorted(
            path.relative_to(self.root).as_posix()
            for folder in self.root.iterdir()
            if folder.is_dir() and not folder.name.startswith((".", "build"))
            for path in folder.rglob("*")
            if path.suffix in (".h", ".cpp")
        )
        self.known = set(self.sources)

    def find(self, includer, name):
        """Returns the project's files that `includer` may mean by `name`: beside it, or by the end of their paths."""
        beside = posixpath.normpath(posixpath.join(posixpath.dirname(includer), name))
        if beside in self.known:
            return [beside]
        name = re.sub(r"^(\.\./)+", "", posixpath.normpath(name))
        unseen = HOSTS[0] if includer.startswith(HOSTS[1]) else HOSTS[1]
        return [s for s in self.sources if (s == name or s.endswith("/" + name)) and not s.startswith(unseen)]


def problem_with_name(room, name, is_quoted, found):
    """Returns what is wrong with the name of a header, or None."""
    if not found:
        if is_quoted:
            return f'"{name}" is not a file of this project'
        if any(re.fullmatch(LIBRARIES[entry], name) for entry in allowed(room) if entry in LIBRARIES):
            return None
        return f"<{name}> is neither of the C++17 standard library nor of a library that {room.folder} may include"
    if len(found) > 1:
        return f"{name} is ambiguous: {', '.join(found)}"
    is_own = room_of(found[0]) == room
    if is_quoted and room.as_users_do and not is_own:
        return f'"{name}" is included in angle brackets here, as users do'
    if not is_quoted and not room.as_users_do:
        return f"<{name}> is a header of this project, which is included in quotes"
    return None


def problem_between(source, target):
    """Returns what is wrong when one file of this project includes another, or None."""
    room, other = room_of(source), room_of(target)
    if other != room and other.folder not in allowed(room) and target not in allowed(room):
        return f"{room.folder} may not include {target}"
    if room.folder == "gsl/host/" and host_rank(target) > host_rank(source):
        return f"{target} comes later in the order of the prefixes ({' '.join(HOST_ORDER)})"
    if "standin" in other.folder and target.split("/")[2] != source.split("/")[2]:
        return f"{target} is private to the stand-in of another prefix"
    return None


def problems_of(tree, source):
    room = room_of(source)
    text = COMMENT.sub(lambda m: "\n" * m.group().count("\n"), (tree.root / source).read_text())
    for match in INCLUDE.finditer(text):
        is_quoted = match.group(2) is not None
        name = match.group(2) if is_quoted else match.group(1)
        if not is_quoted and name in STANDARD:
            continue
        found = [f for f in tree.find(source, name) if room_of(f)]
        problem = problem_between(source, found[0]) if len(found) == 1 else None
        problem = problem or problem_with_name(room, name, is_quoted, found)
        if problem:
            yield f"{source}:{text.count(chr(10), 0, match.start(2 if is_quoted else 1)) + 1}: {problem}"


def check(root):
    tree = Tree(root)
    problems = []
    for source in tree.sources:
        if room_of(source) is None:
            problems.append(f"{source}: does not belong to a room of scripts/check_includes.py")
        else:
            problems.extend(problems_of(tree, source))
    return problems, len(tree.sources)


def main():
    if sys.argv[1:] == ["--table"]:
        print("\n".join(table()))
        return 0
    return house_check.run(check, "no sources found")


if __name__ == "__main__":
    sys.exit(main())
