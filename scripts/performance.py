#!/usr/bin/env python3
"""Makes the document on performance from what ./scripts/bench measured.

usage: performance.py [--write FILE] BUILD_DIR RESULT...

Prints the sections of the results, which are files of BUILD_DIR/bench. With --write it puts them into FILE, whose
other sections stay; it leaves out, and names, a section whose measurements are not complete. A section is a result,
a function that makes its lines, and the notes under the same title in docs/performance-notes.md.
"""

import json
import math
import pathlib
import re
import statistics
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
GENERIC = "figures apart"


# Numbers and tables.

def three(value):
    """Three digits, without an exponent where that is short."""
    if value == 0:
        return "0"
    if 1e-3 <= abs(value) < 1e6:
        digits = max(0, 2 - math.floor(math.log10(abs(value))))
        return f"{value:.{digits}f}"
    return f"{value:.2e}"


def milliseconds(seconds):
    return three(1e3 * seconds)


def size_name(size):
    return f"{size // 1000000}e6" if size >= 1000000 else f"1e{round(math.log10(size))}"


def table(head, rows):
    yield "| " + " | ".join(head) + " |"
    yield "|---" + "|---:" * (len(head) - 1) + "|"
    for row in rows:
        yield "| " + " | ".join(row) + " |"


# The machine and the build.

def first_match(pattern, path):
    match = re.search(pattern, pathlib.Path(path).read_text(), re.MULTILINE)
    return match.group(1).strip() if match else "unknown"


def machine():
    memory = int(first_match(r"^MemTotal:\s*(\d+) kB", "/proc/meminfo")) / 2**20
    processor = first_match(r"^model name\s*:\s*(.*)$", "/proc/cpuinfo")
    return f"{processor}, {memory:.0f} GiB of memory"


def setup(build):
    cache = build / "CMakeCache.txt"
    cached = lambda name: first_match(rf"^{name}:\w+=(.*)$", cache)
    compiler = subprocess.run([cached("CMAKE_CXX_COMPILER"), "--version"], check=True, capture_output=True, text=True)
    flags = " ".join(f"{cached('CMAKE_CXX_FLAGS')} {cached('CMAKE_CXX_FLAGS_RELEASE')}".split())
    return [
        ("system", first_match(r'^PRETTY_NAME="(.*)"$', "/etc/os-release")),
        ("compiler", compiler.stdout.splitlines()[0]),
        ("flags", f"`{flags}`, and those of `cmake/GslTargets.cmake`"),
        ("command", "`./scripts/bench`"),
    ]


# The sweep.

class Family:
    def __init__(self, record):
        self.name, self.kind, self.is_double = record["name"], record["kind"], record["isDouble"]
        self.sizes = {entry["size"]: entry for entry in record["sizes"]}

    def seconds(self, size):
        return self.sizes.get(size, {}).get("oneShot", {}).get("seconds")

    def prepared(self, size, key):
        return self.sizes.get(size, {}).get("prepared", {}).get(key)

    def exponent(self):
        """The slope of log time over log triangles, by least squares over every size."""
        points = [(math.log(e["triangles"]), math.log(self.seconds(size)))
                  for size, e in self.sizes.items() if self.seconds(size)]
        if len(points) < 3:
            return None
        return statistics.linear_regression(*zip(*points)).slope

    def one_shot_bytes(self, size):
        entry = self.sizes.get(size, {})
        if "peakBytes" not in entry.get("oneShot", {}):
            return None
        return (entry["oneShot"]["peakBytes"] + entry["inputBytes"]) / entry["triangles"]


def shown(value, show=three):
    return "" if value is None else show(value)


def one_shot_cell(family, size, patience):
    entry = family.sizes.get(size)
    if entry is None:
        return "not run"
    if "isEnded" in entry["oneShot"]:
        return f"over {1000 * patience}"
    return milliseconds(family.seconds(size))


def one_shot_table(families, sizes, patience):
    generic = next(f for f in families if f.name == GENERIC)
    for f in families:
        common = [size for size in sizes if f.seconds(size) and generic.seconds(size)]
        times = f"{three(f.seconds(common[-1]) / generic.seconds(common[-1]))} at {size_name(common[-1])}" if common else ""
        status = f.sizes[common[-1]]["oneShot"]["status"] if common else ""
        yield ([f.name, f.kind, status] + [one_shot_cell(f, size, patience) for size in sizes]
               + [shown(f.exponent()), times, shown(f.one_shot_bytes(common[-1]) if common else None)])


def prepared_rows(families, size):
    for f in families:
        p = f.sizes.get(size, {}).get("prepared")
        if not p:
            continue
        if "isEnded" in p:
            yield [f.name, "", "over the time"] + [""] * 7
            continue
        triangles = f.sizes[size]["triangles"]
        yield [f.name, three(1e3 * p["prepareSeconds"] * 1e6 / triangles), milliseconds(p["median"]),
               milliseconds(p["medianOfContacts"]) if p["contacts"] else "", milliseconds(p["last99"]),
               milliseconds(p["most"]), str(p["asked"]),
               f"{100 * p['contacts'] / p['asked']:.0f} %", f"{100 * p['starts'] / p['asked']:.0f} %",
               three(p["bytes"] / triangles)]


def solid_rows(families, size):
    for f in families:
        s = f.sizes.get(size, {}).get("prepared", {}).get("solid")
        if s:
            yield [f.name, milliseconds(s["decideSeconds"]), milliseconds(s["firstSeconds"]), milliseconds(s["median"]),
                   three(s["median"] / s["medianOfTouch"]), f"{100 * s['starts'] / s['asked']:.0f} %"]


# The ways of asking, each with the text of its table.
WAYS = {
    "oneShot": ("nothing prepared", ["From arrays in memory to the answer along the direction of the scene, in a fresh process. Whether bodies are",
                                     "solids is decided too, where solids are asked about. Times are medians of three."]),
    "along": ("prepared", ["Along the direction of the scene, on a pair that has answered each question before. Times are medians."]),
    "spread": ("prepared, other directions", ["Along directions spread evenly over the sphere, on a pair that has answered some of them. Times are means."]),
}
# A question beside the first contact by Rule::Touch, and how many times as long it may take.
ASKED = {"notLeaving": ("`Rule::NotLeaving`", 2), "last": ("last contact", 2), "solid": ("`Rule::Solid`", 4)}


def rule_ratio(family, size, way, asked):
    """How many times as long as by Rule::Touch a question takes, or None."""
    times = family.sizes.get(size, {}).get("rules", {}).get(way, {})
    return times[asked] / times["touch"] if asked in times else None


def rule_rows(families, size, way):
    for f in families:
        times = f.sizes.get(size, {}).get("rules", {}).get(way)
        if not times:
            continue
        if "isEnded" in times:
            yield [f.name, "over the time"] + [""] * len(ASKED)
            continue
        yield [f.name, milliseconds(times["touch"]), *(shown(rule_ratio(f, size, way, asked)) for asked in ASKED)]


def rule_goals(families):
    """Yields (what, limit, measured) of each question: the worst scene, size and way."""
    for asked, (name, limit) in ASKED.items():
        ratios = {(f.name, size, way): rule_ratio(f, size, way, asked) for f in families for size in f.sizes for way in WAYS}
        ratios = {key: ratio for key, ratio in ratios.items() if ratio is not None}
        worst = max(ratios, key=ratios.get) if ratios else None
        where = f" ({worst[0]}, {size_name(worst[1])}, {WAYS[worst[2]][0]})" if worst else ""
        yield f"{name}: times `Rule::Touch`{where}", limit, ratios.get(worst)


def patch_rows(patches):
    for patch in patches:
        for entry in patch["sizes"]:
            each = 1e6 * (entry["seconds"] - entry["touch"]) / entry["pairs"]
            yield [patch["name"], str(entry["triangles"]), str(entry["pairs"]), milliseconds(entry["seconds"]),
                   milliseconds(entry["touch"]), three(each)]


def patch_exponent(patch):
    """The slope of log time over log pairs, by least squares."""
    points = [(math.log(entry["pairs"]), math.log(entry["seconds"])) for entry in patch["sizes"]]
    return statistics.linear_regression(*zip(*points)).slope if len(points) > 2 else None


def threads_rows(families, size):
    for f in families:
        p = f.sizes.get(size, {}).get("prepared", {})
        if "prepareOne" not in p or "batchOne" not in p:
            continue
        wall = f.sizes[size]["oneShot"]["wallOnTwo"]
        yield [f.name, milliseconds(wall), three(p["prepareOne"] / p["prepareTwo"]), three(p["batchOne"] / p["batchTwo"])]


def peer_rows(families):
    for f in families:
        for size, entry in f.sizes.items():
            ours = entry["oneShot"]
            for name, peer in entry.get("peers", {}).items():
                row = [f.name, size_name(size), name, milliseconds(ours["seconds"])]
                if "isEnded" in peer:
                    yield row + ["not within the time", "", ""]
                    continue
                if ours["status"] != "contact":
                    error = "" if peer["isContact"] == (ours["status"] == "start") else "wrong"
                elif not peer["isContact"]:
                    error = "no contact found"
                else:
                    error = three(abs(peer["travel"] - ours["travel"]) / ours["travel"])
                yield row + [milliseconds(peer["seconds"]), three(peer["seconds"] / ours["seconds"]), error]


def greatest(values):
    values = [value for value in values if value is not None]
    return max(values) if values else None


def goals(families, sizes):
    """Yields (what, limit, measured). Each limit is a greatest value, and measured may be None."""
    def one_shot(kind):
        return greatest(f.seconds(1000000) and 1e3 * f.seconds(1000000) for f in families if f.kind == kind)

    def prepared(kinds, size, key):
        return greatest(f.prepared(size, key) and 1e3 * f.prepared(size, key) for f in families if f.kind in kinds)

    def over_generic(kind):
        generic = next(f for f in families if f.name == GENERIC)
        ended = any("isEnded" in e["oneShot"] for f in families if f.kind == kind for e in f.sizes.values())
        return math.inf if ended else greatest(
            f.seconds(size) / generic.seconds(size) for f in families if f.kind == kind
            for size in sizes if size >= 10000 and f.seconds(size) and generic.seconds(size))

    def bytes_of(is_double):
        return greatest(f.one_shot_bytes(1000000) for f in families if f.is_double == is_double)

    def threads(key):
        ratios = [f.prepared(size, key + "One") / f.prepared(size, key + "Two") for f in families
                  for size in (1000000,) if f.prepared(size, key + "Two")]
        return min(ratios) if ratios else None

    def on_two(kind):
        return greatest(1e3 * f.sizes[1000000]["oneShot"]["wallOnTwo"] for f in families
                        if f.kind == kind and "wallOnTwo" in f.sizes.get(1000000, {}).get("oneShot", {}))

    def preparing():
        return greatest(f.prepared(1000000, "prepareSeconds") and
                        1e9 * f.prepared(1000000, "prepareSeconds") / f.sizes[1000000]["triangles"] for f in families)

    usual = ("apart", "interleaved")
    yield "one question, nothing prepared, 1e6 each, bodies apart: ms", 50, one_shot("apart")
    yield "the same on two threads, wall time: ms", 30, on_two("apart")
    yield "one question, nothing prepared, 1e6 each, interleaved: ms", 150, one_shot("interleaved")
    yield "preparing, a million triangles: ms", 150, preparing()
    yield "a further direction at 1e6, apart or interleaved, median: ms", 2, prepared(usual, 1000000, "median")
    yield "a further direction at 1e6, apart or interleaved, 99th percentile: ms", 5, prepared(usual, 1000000, "last99")
    yield "a further direction at 1e5, apart or interleaved, median: ms", 0.3, prepared(usual, 100000, "median")
    yield "a further direction at 1e5, apart or interleaved, 99th percentile: ms", 2, prepared(usual, 100000, "last99")
    yield "memory a triangle with the input, single precision: bytes", 140, bytes_of(False)
    yield "memory a triangle with the input, double precision: bytes", 230, bytes_of(True)
    yield "growth: greatest exponent (n log n has 1.1 over these sizes)", 1.1, greatest(f.exponent() for f in families)
    yield "hard scenes along an axis: times the generic scene", 5, over_generic("hard along an axis")
    yield "hard scenes aslant: times the generic scene", 20, over_generic("hard aslant")
    yield "speed-up by two threads, preparing", -1.7, threads("prepare")
    yield "speed-up by two threads, batches", -1.7, threads("batch")


def goal_row(what, limit, measured):
    if measured is None:
        return [what, "", "not measured", ""]
    is_met = measured <= limit if limit > 0 else measured >= -limit
    value = "over the time" if math.isinf(measured) else three(measured)
    digits = 4
    while not is_met and value != "over the time" and float(value) == abs(limit):  # 2.00 would look met
        value = f"{measured:.{digits}g}"
        digits += 1
    return [what, f"{'at most' if limit > 0 else 'at least'} {abs(limit)}", value, "yes" if is_met else "no"]


def sweep(result):
    families = [Family(record) for record in result["families"]]
    sizes = sorted({size for f in families for size in f.sizes})
    versions = ", ".join(f"{name} {version}" for name, version in result["peers"].items()) or "none was there"
    yield "The scenes are families of two bodies at several sizes, from `bench/SweepFamilies.cpp`; sizes are triangles in"
    yield "each body. Times are medians of processor time in milliseconds on one thread, unless a column says otherwise."
    yield f"A measurement is ended after {result['patience']} s."
    if any(f.name == GENERIC for f in families):
        yield from ["", "### Goals", "", "Each row shows the worst scene of its kind.", ""]
        rows = [*goals(families, sizes), *rule_goals(families),
                ("patch: greatest exponent of its time over its pairs", 1.1, greatest(map(patch_exponent, result["patches"])))]
        yield from table(["goal", "limit", "measured", "met"], (goal_row(*row) for row in rows))
        yield from ["", "### One question, nothing prepared", ""]
        yield "From arrays in memory to the answer, in a fresh process. The exponent is fitted over every size. The"
        yield f"ratio is to the scene \"{GENERIC}\", at the largest size that both ran. Memory is the peak with the input, in"
        yield "bytes a triangle, at the same size."
        yield ""
        yield from table(["scene", "kind", "answer", *map(size_name, sizes), "exponent", "ratio", "memory"],
                         one_shot_table(families, sizes, result["patience"]))
    for size in (100000, 1000000):
        rows = list(prepared_rows(families, size))
        if rows:
            yield from ["", f"### A further direction on a prepared pair, {size_name(size)}", ""]
            yield "Directions are spread evenly over the sphere. Preparing is everything up to the third question, for a million"
            yield "triangles. Memory is what the pair holds at the end without the input, in bytes a triangle."
            yield ""
            yield from table(["scene", "preparing", "median", "median of contacts", "99th percentile", "most", "asked", "contacts", "starts",
                              "memory"], rows)
    for size in (100000, 1000000):
        rows = list(solid_rows(families, size))
        if rows:
            yield from ["", f"### Solids, {size_name(size)}", ""]
            yield "Questions by `Rule::Solid` on the same prepared pair and along the same directions, one after the other with"
            yield "`Rule::Touch`. The first question decides whether the bodies overlap at rest, which the next ones reuse. Whether"
            yield "they are solids is decided before. The ratio is that of the medians to `Rule::Touch`."
            yield ""
            yield from table(["scene", "are they solids", "first question", "median", "ratio", "starts"], rows)
    for size in (100000, 1000000):
        for way, (name, text) in WAYS.items():
            rows = list(rule_rows(families, size, way))
            if rows:
                yield from ["", f"### Each question, {name}, {size_name(size)}", "", *text]
                yield "The other columns are ratios to `Rule::Touch`. Solids are asked about where both bodies are solids."
                yield ""
                yield from table(["scene", "`Rule::Touch`", *(name for name, _ in ASKED.values())], rows)
    rows = list(patch_rows(result["patches"]))
    if rows:
        yield from ["", "### Patches", ""]
        yield "Triangles are those of each body. The first contact is a part of the time. The time of a pair is the rest, in"
        yield "microseconds, divided by the pairs. The pairs are counted and none is written."
        yield ""
        yield from table(["scene", "triangles", "pairs", "time", "first contact", "time of a pair"], rows)
    rows = list(threads_rows(families, 1000000)) or list(threads_rows(families, 100000))
    if rows:
        yield from ["", "### Two threads", "", "The time of one question with nothing prepared is wall time. Ratios are",
                    "wall times of one thread over two.", ""]
        yield from table(["scene", "one question on two threads", "preparing", "batch"], rows)
    rows = list(peer_rows(families))
    if rows:
        yield from ["", "### Other libraries", "", f"Versions: {versions}. Each prepares what it needs and looks once, on",
                    "one thread. FCL advances conservatively. Embree casts rays from the vertices of both bodies, which",
                    "misses contacts of two edges, in single precision. The error is relative to our travel.", ""]
        yield from table(["scene", "size", "library", "ours", "theirs", "ratio", "error of the travel"], rows)


# The records.

def records_goals(works):
    """Yields the rows of the goals: ours beside the best of the peers."""
    for work in works:
        ours, *peers = work["parties"]
        if not peers:
            continue
        for what, key, limit in (("writing: times the fastest", "writeSeconds", 1.5),
                                 ("reading: times the fastest", "readSeconds", 1.5), ("bytes: times the fewest", "bytes", 1)):
            yield goal_row(f"{work['name']}, {what}", limit, ours[key] / min(peer[key] for peer in peers))
        yield goal_row(f"{work['name']}, writing: peak memory with the objects, times the objects", 2,
                       1 + ours["writePeak"] / ours["objectBytes"])
        yield goal_row(f"{work['name']}, reading: peak memory with the objects, times the objects", 2,
                       ours["readPeak"] / ours["objectBytes"])


def records_rows(works):
    for work in works:
        ours = work["parties"][0]
        for party in work["parties"]:
            def ratio(key):
                return "" if party is ours else three(ours[key] / party[key])

            def each(key):
                return three(party[key] / work["count"])

            yield [work["name"], party["name"], milliseconds(party["writeSeconds"]), ratio("writeSeconds"),
                   milliseconds(party["readSeconds"]), ratio("readSeconds"), each("bytes"), each("writePeak"),
                   each("readPeak"), each("objectBytes")]


def records(result):
    versions = ", ".join(f"{name} {version}" for name, version in result["peers"].items()) or "none was there"
    counts = sorted({work["count"] for work in result["works"]})
    yield f"{', '.join(map(size_name, counts))} objects are saved to bytes in memory and restored from them. Times are medians of"
    yield "processor time in milliseconds on one thread, from objects to bytes and from bytes to objects. Bytes and memory"
    yield "are for one object. The peak of writing is beyond the objects, and the peak of reading includes the restored"
    yield f"objects. Versions of the other libraries: {versions}."
    yield ""
    yield "Ours writes objects of the library through their visitors and restores such objects. The others write the same"
    yield "objects and restore plain objects of the same contents and size, allocated in the same way. Each checks the"
    yield "bytes that it reads."
    yield from ["", "### Goals", ""]
    yield from table(["goal", "limit", "measured", "met"], records_goals(result["works"]))
    yield from ["", "### Times, bytes and memory", "", "A ratio is our time divided by theirs.", ""]
    yield from table(["objects", "library", "write", "ratio", "read", "ratio", "bytes", "peak of writing", "peak of reading",
                      "objects alone"], records_rows(result["works"]))


# The Python module.

CALLS = {"sweep": "`gg.sweep(a, b, \"z\")`, bodies prepared", "pair.sweep": "`pair.sweep(\"z\")`",
         "batch": "`pair.sweep(D)`, one row", "point_triangle": "`gg.point_triangle(p, a, b, c)`, {rows} rows"}


def python(result):
    own, there, rows = result["own"], result["baseline"], size_name(result["rows"])
    yield "Each call beside the same call in C++, on bodies of twelve triangles and on arrays. Times are the least of some"
    yield "rounds, in microseconds of processor time on one thread; of a batch it is wall time, because it has a thread of"
    yield f"its own. Python {result['python']}, NumPy {result['numpy']}."
    yield from ["", "### Goals", ""]
    yield from table(["goal", "limit", "measured", "met"], [
        goal_row(f"{CALLS[name].format(rows=rows)}: microseconds more than in C++", 5, 1e-3 * (own[name] - there[name]))
        for name in ("sweep", "pair.sweep")
    ] + [goal_row(f"{CALLS['point_triangle'].format(rows=rows)}: times the loop in C++", 1.2,
                  own["point_triangle"] / there["point_triangle"])])
    yield from ["", "### Calls", ""]
    yield from table(["call", "Python", "C++", "difference", "ratio"], (
        [text.format(rows=rows), *(three(1e-3 * time) for time in (own[name], there[name], own[name] - there[name])),
         three(own[name] / there[name])] for name, text in CALLS.items()))
    yield from ["", "### The same distances in NumPy", "", "The ratio is to `gg.point_triangle`.", ""]
    yield from table(["way", "time", "ratio"], (
        [name, three(1e-3 * time), three(time / own["point_triangle"])] for name, time in result["numpyTimes"].items()))


# The library.

# What a goal is about, its limit over the fastest peer, and its works.
RATIOS = [
    ("solver, n = 3, 4, 8, 16", 0.95, [f"FactorAndSolve/{n}" for n in (3, 4, 8, 16)]),
    ("arithmetic that keeps the length", 1.05, ["VectorAdd", "VectorScale", "VectorCrossAndLength"]),
    ("boxes, transforms, comparisons", 1.1,
     ["BoxIntersect", "BoxAddPoints", "TransformPoint", "VectorDot", "VectorNormalize", "IsParallel", "RealEqual"]),
    ("point and line, point and plane", 1.2, ["PointLineDistance", "PointPlaneDistance"]),
    ("line and plane, two lines", 1.2, ["LinePlaneIntersection", "LineLineCrossing", "LineLineSkew"]),
    ("point and segment, point and triangle", 1.5, ["PointSegmentDistance", "PointTriangleDistance"]),
    ("two segments", 2.5, ["SegmentSegmentDistance"]),
    ("rotation, product, inverse, transform of a box", 1.2,
     ["RotationAboutAxis", "TransformConcatenate", "TransformInverse", "BoxTransform"]),
    ("circle through three points", 1.5, ["CircumCircle"]),
]
# What a goal is about, its limit in nanoseconds, and its work.
NANOSECONDS = [
    ("two triangles, rejected by their extents", 8, "SweepOutOfReach"),
    ("two triangles, apart", 100, "SweepApart"),
    ("two triangles, every candidate", 200, "SweepEveryCandidate"),
    ("two segments of a plane, overlapping", 30, "InPlaneOverlapping"),
    ("two segments of a plane, aside", 8, "InPlaneAside"),
]
# What a goal is about, its limit in nanoseconds for a pair with AVX-512, and its work. With AVX2, which has half the
# lanes, the limit is twice that.
BATCHES = [
    ("prepared pairs of triangles, out of reach", 2, "BatchPreparedOutOfReach"),
    ("prepared pairs of triangles, apart", 15, "BatchPreparedApart"),
    ("prepared pairs of triangles, every candidate", 45, "BatchPreparedEveryCandidate"),
]
BATCH_INPUTS = 4096
# Second implementations of this project are no peers: they are slow on purpose.
SECOND = ("transcription", "textbook", "steps", "scalar", "baseline", "avx2", "learned")
# Peers that do less than ours, by work, and what they leave out. They are shown, and no ratio is to them.
UNIT_PLANE = "the normal has the length 1, and the plane's offset is known, so nothing is divided"
LESS = {
    "LinePlaneIntersection": {
        "Eigen": f"{UNIT_PLANE} but the way; no tolerance is tested, and parallel lines have no answer of their own",
        "Bullet": f"{UNIT_PLANE} but the way; one test for parallel lines, none for a point on the plane"},
    "PointPlaneDistance": {"Eigen": UNIT_PLANE, "Bullet": UNIT_PLANE},
    "PointSegmentDistance": {"CGAL": "the distance alone, where the others find the nearest point too"},
    "SegmentSegmentDistance": {"CGAL": "the distance alone, where the others find both nearest points too"},
    "TransformConcatenate": {"Bullet": "three rows, where ours multiplies all four rows in full"},
}
# What a work does where its name does not say it, and how the peers differ.
DOES = {
    "BoxAddPoints": "All inputs are added, one after the other, to one box. Ours tests for an empty box each time.",
    "BoxIntersect": "Ours compares extents, rounded as documented; the peers compare corners.",
    "BoxTransform": "The box around eight moved corners. Eigen moves each; ours orders products; Bullet adds magnitudes.",
    "CircumCircle": "Centre and normal. Eigen solves the three planes.",
    "IsParallel": "Unit components within 1e-5, either sense.",
    "LineLineCrossing": "Lines of one plane: the crossing and the gap. Eigen does the usual formula.",
    "LineLineSkew": "The same call with lines that do not meet.",
    "LinePlaneIntersection": "Ours and the steps test the way, the point on the plane and parallel lines, by tolerances.",
    "LinesAreSkew": "Whether the gap of two lines is above the tolerance.",
    "ModelSegmentCopy": "Copies two holders that share their objects, and the identity. The process has one thread.",
    "ModelSegmentRegenerate": "Copies, then clones both objects and calls each.",
    "PointLineDistance": "The direction has any length. Ours and the bare structs keep it; the other peers measure it.",
    "PointPlaneDistance": "The normal has any length, which ours and the bare structs keep, and by which they divide.",
    "PointSegmentDistance": "The distance and the nearest point.",
    "PointTriangleDistance": "The distance. Eigen, CGAL and Bullet find the region of the nearest point first.",
    "RotationAboutAxis": "The matrix of a turn about a line, by an axis of any length.",
    "SegmentSegmentDistance": "The distance and the nearest point of each.",
    "TransformConcatenate": "One product after the other, of 4 x 4 matrices.",
    "TransformInverse": "The inverse of a rigid matrix. glm inverts any affine matrix.",
    "VectorAdd": "The sum and its length.",
    "VectorCrossAndLength": "The cross product and its length.",
    "VectorDot": "Ours and the bare structs carry their length along.",
    "VectorNormalize": "Ours keeps the length and tests it; the peers measure it.",
    "VectorScale": "The multiple and its length, without a root.",
}


def fastest_peer(by, work=""):
    """Returns the name of the fastest peer that does the same work, or None."""
    others = {who: time for who, time in by.items() if who != "ours" and who not in LESS.get(work, {})}
    peers = {who: time for who, time in others.items() if who not in SECOND}
    peers = peers or {who: time for who, time in others.items() if who == "steps"}
    return min(peers, key=peers.get) if peers else None


def batch_time(by, width):
    """Returns the time of a batch with these registers, or None. Ours is the widest that the processor has."""
    names = {"AVX-512": "ours" if "avx2" in by else None, "AVX2": "avx2" if "avx2" in by else "ours"}
    # Without a row of the baseline, ours is the baseline.
    return by.get(names[width]) if "baseline" in by else None


def library_goals(works):
    """Yields the rows of the goals: the worst work of each."""
    def ratio(work):
        by = works.get(work, {})
        peer = fastest_peer(by, work)
        return by["ours"] / by[peer] if peer and "ours" in by else None

    for what, limit, of in RATIOS:
        measured = {work: ratio(work) for work in of if ratio(work) is not None}
        worst = max(measured, key=measured.get) if measured else None
        name = f" ({worst})" if worst and len(of) > 1 else ""
        yield goal_row(f"{what}: times the fastest{name}", limit, measured.get(worst))
    for what, limit, work in NANOSECONDS:
        yield goal_row(f"{what}: ns", limit, works.get(work, {}).get("ours"))
    for width, factor in (("AVX-512", 1), ("AVX2", 2)):
        for what, limit, work in BATCHES:
            time = batch_time(works.get(work, {}), width)
            yield goal_row(f"{what}, {width}: ns for a pair", factor * limit, time and time / BATCH_INPUTS)


def in_order(work):
    return [part.zfill(12) if part.isdigit() else part for part in work.split("/")]


def library_rows(works):
    for work in sorted(works, key=in_order):
        by = works[work]
        if work.startswith("Batch") or "ours" not in by:
            continue
        peer = fastest_peer(by, work)
        others = ", ".join(f"{who}{' (less)' * (who in LESS.get(work, {}))} {three(time)}"
                           for who, time in sorted(by.items()) if who not in ("ours", "learned", peer))
        yield [work, three(by["ours"]), three(by["learned"]) if "learned" in by else "", peer or "", three(by[peer]) if peer else "",
               three(by["ours"] / by[peer]) if peer else "", others]


def less_rows(works):
    for work in sorted(LESS, key=in_order):
        for who, what in LESS[work].items():
            if who in works.get(work, {}):
                yield [work, who, what]


def does_rows(works):
    for work in sorted(DOES, key=in_order):
        if work in works:
            yield [work, DOES[work]]


def text_table(head, rows):
    """A table without numbers."""
    return [line.replace("---:", "---") for line in table(head, rows)]


def batch_rows(works, inputs):
    for work in sorted(works):
        by = {who: time / inputs for who, time in works[work].items()}
        if work.startswith("Batch") and "scalar" in by:
            yield [work.removeprefix("Batch"), *(three(by[who]) if who in by else "" for who in ("ours", "avx2", "baseline")),
                   three(by["scalar"]), three(by["scalar"] / by["ours"])]


def library(result):
    works = result["works"]
    yield "Times are medians of nine runs in nanoseconds of processor time, on one processor, in random order. Every work"
    yield "runs over 4096 random inputs in turn, so that no branch predictor learns them, and BoxAddPoints adds all of them. A"
    yield "ratio is our time divided by the time of the fastest peer that does the same work. The results of every peer are"
    yield "compared with ours before it is timed, and a row that differs ends the measurement. The loops of the programs begin"
    yield "at cache lines, so that a row of a few cycles does not change with the code before it. Where a work branches, the"
    yield "column \"learned\" has our time for 256 inputs in turn, which a branch predictor learns by heart."
    yield from ["", "### Goals", "", "Each row shows the worst work of its kind.", ""]
    yield from table(["goal", "limit", "measured", "met"], library_goals(works))
    yield from ["", "### Values, queries and small systems", ""]
    yield "Every peer computes in double precision; Bullet is built for it with `BT_USE_DOUBLE_PRECISION`. The peer \"bare\" is"
    yield "the same arithmetic on plain structs, and \"steps\" are the documented steps on them. Ours are calls into a shared"
    yield "library on objects with an identity; the others are inlined, but for Bullet's triangle. Eigen has no distance of a"
    yield "triangle or of two segments, and no crossing of two lines: there it does the usual formula. glm crosses planes with"
    yield "half lines only, and Bullet's function for two segments misses the least distance of some, so neither is shown."
    yield ""
    yield from table(["work", "ours", "learned", "fastest peer", "its time", "ratio", "others"], library_rows(works))
    rows = list(less_rows(works))
    if rows:
        yield from ["", "Peers marked (less) do less than ours, so no ratio is to them:", ""]
        yield from text_table(["work", "peer", "what is less"], rows)
    yield from ["", "What a work does:", ""]
    yield from text_table(["work", "what is done"], does_rows(works))
    yield from ["", "### Batches", "", "Times for one input. The gain is the loop of scalar calls over ours.", ""]
    yield from table(["batch", "ours", "AVX2", "baseline", "loop", "gain"], batch_rows(works, BATCH_INPUTS))


# Large systems and graphs.

# The limit over the fastest OpenBLAS, and the sizes.
SOLVERS = [("32 to 512", 0.6, (32, 64, 128, 256, 512)), ("1024", 0.8, (1024,)), ("2048", 0.85, (2048,))]
EVERY_SIZE = [n for _, _, sizes in SOLVERS for n in sizes]
# The limit over one read of the matrix of 20,000 nodes, and the kind of graph.
LABELLINGS = [("sparse", 1.3), ("path", 0.75)]


def over(by, peer):
    """Returns our time over that of the peer, or None."""
    return by["ours"] / by[peer] if peer in by and "ours" in by else None


def worst(ratios):
    """Returns the size with the greatest ratio, and that ratio. Both are None if any size was not measured."""
    return max(ratios.items(), key=lambda item: item[1]) if ratios and None not in ratios.values() else (None, None)


def systems_goals(works):
    """Yields the rows of the goals: the worst size of each."""
    for what, limit, sizes in SOLVERS:
        size, ratio = worst({n: over(works.get(f"FactorAndSolve/{n}", {}), "OpenBLAS") for n in sizes})
        name = f" ({size})" if size and len(sizes) > 1 else ""
        yield goal_row(f"{what} unknowns: times the fastest OpenBLAS{name}", limit, ratio)
    narrow = {n: works.get(f"FactorAndSolve_avx2/{n}", {}) for n in EVERY_SIZE}
    size, ratio = worst({n: over(by, "OpenBLAS") for n, by in narrow.items()})
    yield goal_row(f"32 to 2048 unknowns, AVX2 on both sides: times OpenBLAS{f' ({size})' if size else ''}", 1.0, ratio)
    for kind, limit in LABELLINGS:
        yield goal_row(f"labelling, {kind}, 20,000 nodes: times one read of the matrix", limit,
                       over(works.get(f"Label_{kind}/20000", {}), "one_read"))


def solver_rows(works):
    for width, name in (("widest", "FactorAndSolve"), ("AVX2", "FactorAndSolve_avx2")):
        for n in EVERY_SIZE:
            by = works.get(f"{name}/{n}", {})
            if "ours" in by:
                times = [three(1e-3 * by[who]) if who in by else "" for who in ("ours", "OpenBLAS", "Eigen_native", "Eigen")]
                yield [str(n), width, *times, *(three(over(by, who)) if who in by else "" for who in ("OpenBLAS", "Eigen_native"))]


def labelling_rows(works):
    for work in sorted((work for work in works if work.startswith("Label_")), key=in_order):
        by = works[work]
        if "ours" in by and "one_read" in by:
            kind, n = work.removeprefix("Label_").split("/")
            times = [three(1e-3 * by[who]) if who in by else "not run"
                     for who in ("ours", "one_read", "Boost_lists", "Boost_with_conversion")]
            yield [kind, n, *times, three(over(by, "one_read"))]


def systems(result):
    works = result["works"]
    yield "Times are medians of nine runs in microseconds of processor time, on one processor, in random order."
    yield from ["", "### Goals", ""]
    yield from table(["goal", "limit", "measured", "met"], systems_goals(works))
    yield from ["", "### Linear systems", ""]
    yield "One right side. OpenBLAS runs on one thread, with its fastest kernel for this processor; with AVX2 it is the one"
    yield "for Haswell. \"Eigen native\" is compiled with `-march=native`, and fuses products and sums."
    yield "Ratios are our time over the peer's."
    yield ""
    yield from table(["unknowns", "vectors", "ours", "OpenBLAS", "Eigen native", "Eigen", "over OpenBLAS", "over Eigen native"],
                     solver_rows(works))
    yield from ["", "### Labelling of a graph", ""]
    yield "The graph is a matrix with a byte for each pair of nodes. One read takes every byte once. Boost.Graph has adjacency"
    yield "lists, with and without the time to make them from the matrix."
    yield ""
    yield from table(["graph", "nodes", "ours", "one read", "Boost, lists", "Boost, from the matrix", "over one read"],
                     labelling_rows(works))


SECTIONS = [("First contact of bodies", "bench_sweep.json", sweep), ("The library", "bench_library.json", library),
            ("Large systems and graphs", "bench_systems.json", systems),
            ("Records", "bench_records.json", records),
            ("The Python module", "bench_python.json", python)]


def parts_of(path):
    """The text before the first title of a document, and the text under each title."""
    first, *parts = re.split(r"^## (.*)$", path.read_text(), flags=re.MULTILINE)
    return first, {title.strip(): text.strip() for title, text in zip(parts[::2], parts[1::2])}


def introduction(build):
    rows = setup(build)
    lines = ["# Performance", "", "`./scripts/bench` writes this document; do not edit it. The notes come from",
             "[performance-notes.md](performance-notes.md).", "", *table(["", ""], rows)]
    lines[-len(rows) - 1] = "|---|---|"
    return "\n".join(lines)


def section(make, result, notes):
    # Other sections may have been measured on another machine.
    lines = [f"Measured on: {machine()}.", "", *make(result)]
    if notes:
        lines += ["", "### What falls short, and why", "", notes]
    return "\n".join(lines)


def document(build, names, path):
    """The document, and the titles of sections that are left out because they are not complete."""
    _, notes = parts_of(ROOT / "docs/performance-notes.md")
    unknown = set(notes) - {title for title, _, _ in SECTIONS}
    if unknown:
        sys.exit(f"docs/performance-notes.md: no section is called {', '.join(sorted(unknown))}")
    texts = parts_of(path)[1] if path else {}
    left_out = []
    for title, name, make in SECTIONS:
        if name not in names:
            continue
        result = json.loads((build / "bench" / name).read_text())
        if path and not result["isComplete"]:
            left_out.append(title)
        else:
            texts[title] = section(make, result, notes.get(title))
    parts = [introduction(build)] + [f"## {title}\n\n{texts[title]}" for title, _, _ in SECTIONS if title in texts]
    return "\n\n".join(parts) + "\n", left_out


def main():
    arguments = sys.argv[1:]
    path = None
    if arguments[:1] == ["--write"] and len(arguments) > 1:
        path = pathlib.Path(arguments[1])
        del arguments[:2]
    if len(arguments) < 2:
        sys.exit(__doc__)
    text, left_out = document(pathlib.Path(arguments[0]), arguments[1:], path)
    if path is None:
        print(text, end="")
        return
    path.write_text(text)
    print(f"wrote {path}" + "".join(f"; {title} is as before: not everything was measured" for title in left_out))


if __name__ == "__main__":
    main()
