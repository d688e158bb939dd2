#!/usr/bin/env python3
"""Writes the seeds of the targets in SEEDS into their folders under corpus/.

usage: make_seeds.py [--check]

With --check it writes nothing. The exit code is 0 when the folders hold exactly these seeds, and otherwise 1.

This program has its own encoder and its own tables, so that the tests can compare the library with the seeds.
"""

import pathlib
import re
import struct
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
CORPUS = ROOT / "fuzz" / "corpus"
VERSION = ".".join(
    re.search(rf"#define GSL_VERSION_{part} (\d+)", (ROOT / "gsl/include/gsl_Version.h").read_text()).group(1)
    for part in ("MAJOR", "MINOR", "PATCH")
)

INTEGER, DOUBLE, BOOLEAN, STRING, RECORD, OBJECT, REFERENCE, NULL = range(8)
COLLECTION = 0x00230001

# The names that the classes are registered under.
CLASSES = {
    0x030A0001: "gsl_Point",
    0x030A0002: "gsl_Matrix",
    0x030A0003: "gsl_Vector",
    0x030A0004: "gsl_Plane",
    0x030A0005: "gsl_Dot",
    0x030A0006: "gsl_StLine",
    0x030A0007: "gsl_BBox",
    0x030A0008: "gsl_Segment",
    0x030A000A: "gsl_LineArray",
    0x030A000B: "gsl_ModelSegment",
    0x030A000D: "gsl_PlaneArray",
    0x030A000E: "gsl_DotArray",
}


def varint(value):
    out = bytearray()
    while value >= 0x80:
        out.append(value & 0x7F | 0x80)
        value >>= 7
    out.append(value)
    return bytes(out)


def zigzag(value):
    return varint(-2 * value - 1 if value < 0 else 2 * value)


def checksum(data):
    """Returns the CRC-32C of the bytes, byte by byte."""
    total = 0xFFFFFFFF
    for byte in data:
        total ^= byte
        for _ in range(8):
            total = total >> 1 ^ (0x82F63B78 if total & 1 else 0)
    return total ^ 0xFFFFFFFF


def frame(body):
    """Returns a body of at most 2^20 bytes between its header and its checksum."""
    head = b"gslr\x02\0\0\0" + struct.pack("<Q", len(body))
    return head + struct.pack("<I", checksum(head)) + body + struct.pack("<I", checksum(bytes(8) + body))


def text(value):
    return varint(len(value.encode())) + value.encode()


class Record:
    """A record; `fields` are tuples of name, index, kind and value, where a value may be a Record."""

    serial = 0

    def __init__(self, type_id, fields=(), collection=0, numbers=None, matrix=None, anonymous=False):
        self.type_id = type_id
        self.fields = list(fields)
        self.collection = collection
        self.numbers = numbers or []
        self.matrix = matrix or (0, 0, [])
        Record.serial += 1
        self.uid = (0, 0) if anonymous else (0x5EED, Record.serial)


class Encoder:
    """The byte form of a store. Records that no writer could write have numbers in place of records."""

    def __init__(self):
        self.names, self.classes, self.texts, self.prefixes = [], [], [], []
        self.shapes, self.objects, self.records = [], [], []
        self.number_of, self.object_of = {}, {}

    @staticmethod
    def number(table, item):
        if item not in table:
            table.append(item)
        return table.index(item)

    def value(self, kind, value):
        if kind == INTEGER:
            return zigzag(value)
        if kind == DOUBLE:
            return struct.pack("<d", value)
        if kind == BOOLEAN:
            return bytes([value])
        if kind == STRING:
            return varint(self.number(self.texts, value))
        if not isinstance(value, Record):
            return varint(value)
        if kind == RECORD:
            return varint(self.add(value))
        if kind == REFERENCE:
            return varint(2 * self.object_of[id(value)] + 1)
        number = self.object_of[id(value)] = len(self.objects)
        self.objects.append(None)
        self.objects[number] = self.add(value)
        return varint(2 * number)

    def add(self, record):
        """The number of a record, whose fields are written first."""
        values, entries, fields = b"", b"", []
        for name, index, kind, value in record.fields:
            stored_kind = OBJECT if kind == REFERENCE else kind
            if name:
                fields.append((self.number(self.names, name), index, stored_kind))
                values += self.value(kind, value)
            else:
                entries += bytes([stored_kind]) + self.value(kind, value)
        if record.collection == 1:
            entries += b"\xff"
        elif record.collection == 57:
            entries = varint(len(record.numbers)) + b"".join(map(varint, record.numbers))
        elif record.collection == 82:
            rows, columns, numbers = record.matrix
            entries = varint(rows) + varint(columns) + struct.pack(f"<{len(numbers)}d", *numbers)
        shape = self.number(self.shapes, (self.number(self.classes, record.type_id), record.collection, fields))
        prefix, serial = record.uid
        identity = varint(0)
        if record.uid != (0, 0):
            identity = varint(self.number(self.prefixes, prefix) + 1) + varint(serial)
        out = varint(shape) + identity + values + entries
        owns = any(kind == OBJECT for _, _, kind, _ in record.fields)
        if not owns and out in self.records:
            return self.records.index(out)
        self.records.append(out)
        return len(self.records) - 1


def counted(items):
    items = list(items)
    return varint(len(items)) + b"".join(items)


def encode(*roots):
    """The byte form of a store with these roots."""
    to = Encoder()
    numbers = [to.add(root) for root in roots]
    body = text(f"gsl_geometry {VERSION}") + counted(map(text, to.names))
    body += counted(varint(type_id) + text(CLASSES.get(type_id, "")) for type_id in to.classes)
    body += counted(map(text, to.texts)) + counted(struct.pack("<Q", prefix) for prefix in to.prefixes)
    body += counted(
        varint(class_number)
        + varint(collection)
        + counted(varint(name) + zigzag(index) + bytes([kind]) for name, index, kind in fields)
        for class_number, collection, fields in to.shapes
    )
    body += counted(map(varint, to.objects)) + counted(text("") + varint(number) for number in numbers)
    return frame(body + counted(to.records))


def doubles(**values):
    return [(name, -1, DOUBLE, value) for name, value in values.items()]


def point(x=1.0, y=-2.0, z=0.5):
    return Record(0x030A0001, doubles(_x=x, _y=y, _z=z))


def vector(x=3.0, y=4.0, z=0.0, magnitude=5.0):
    return Record(0x030A0003, doubles(_x=x, _y=y, _z=z, _magnitude=magnitude))


def matrix(is_identity=0):
    entries = [0.0, -1.0, 0.0, 7.0, 1.0, 0.0, 0.0, 8.0, 0.0, 0.0, 1.0, 9.0, 0.0, 0.0, 0.0, 1.0]
    array = Record(COLLECTION, collection=82, matrix=(4, 4, entries), anonymous=True)
    return Record(0x030A0002, [("_is_identity", -1, INTEGER, is_identity), ("DDBmatrix", -1, RECORD, array)])


def parents(*ids):
    return Record(COLLECTION, collection=57, numbers=list(ids))


def plane(method="FROM_FACE"):
    return Record(
        0x030A0004,
        [
            ("_ok", 0, BOOLEAN, True),
            ("_point", 1, RECORD, point()),
            ("_normal", 2, RECORD, vector()),
            ("_method", 3, STRING, method),
            ("_flip", 4, BOOLEAN, True),
            ("parent_ids", 5, RECORD, parents(4, 4294967295)),
            ("owner_feat_id", 6, INTEGER, -17),
        ],
    )


def axis(method="FROM_DATUM_CSYS"):
    return Record(
        0x030A0006,
        [
            ("_point", 0, RECORD, point()),
            ("_dir", 1, RECORD, vector()),
            ("_method", 2, STRING, method),
            ("_flip", 3, BOOLEAN, False),
            ("_ok", 4, BOOLEAN, True),
            ("parent_ids", 5, RECORD, parents()),
            ("owner_feat_id", 6, INTEGER, 2147483647),
        ],
    )


def dot(method="gsl_FROM_DATUM_CSYS_ORIGIN"):
    return Record(
        0x030A0005,
        [
            ("_point", -1, RECORD, point()),
            ("_method", -1, STRING, method),
            ("_instanceId", -1, INTEGER, 3),
            ("_entityId", -1, INTEGER, -2147483648),
        ],
    )


def box():
    return Record(
        0x030A0007, [("_low", -1, RECORD, point(-1.0)), ("_high", -1, RECORD, point(2.0, 3.0, 4.0))]
    )


def segment():
    return Record(0x030A0008, [("_point1", -1, RECORD, point()), ("_point2", -1, RECORD, point(5.0))])


def model_segment(first, second):
    return Record(0x030A000B, [("point1", 0, *first), ("point2", 1, *second)])


def entries(*records, null=0):
    """Returns a list of records. None becomes a null of class `null`."""
    fields = [("", -1, NULL, null) if r is None else ("", -1, RECORD, r) for r in records]
    return Record(COLLECTION, fields, collection=1)


def array(type_id, null, *records, ratio=1.5):
    return Record(
        type_id,
        [("growthRatio_", -1, DOUBLE, ratio), ("data_", -1, RECORD, entries(*records, null=null))],
    )


def record_seeds():
    Record.serial = 0
    shared = dot("gsl_FROM_NODE")
    null_dot = (NULL, 0x030A0005)
    seeds = {
        # Each registered class has one whole record, under its registered name.
        "gsl_Point": encode(point()),
        "gsl_Matrix": encode(matrix()),
        "gsl_Vector": encode(vector()),
        "gsl_Plane": encode(plane()),
        "gsl_Dot": encode(dot()),
        "gsl_StLine": encode(axis()),
        "gsl_BBox": encode(box()),
        "gsl_Segment": encode(segment()),
        "gsl_ModelSegment": encode(model_segment((OBJECT, dot()), (OBJECT, dot("gsl_FROM_POINT")))),
        "gsl_DotArray": encode(array(0x030A000E, 0x030A0005, dot(), None, dot())),
        "gsl_PlaneArray": encode(array(0x030A000D, 0x030A0004, plane(), None)),
        "gsl_LineArray": encode(array(0x030A000A, 0x030A0006, None, axis())),
        # These hold lists, shared objects and empty ends.
        "list_of_points": encode(entries(point(), point(9.0))),
        "list_of_segments": encode(
            entries(
                model_segment((OBJECT, shared), null_dot),
                model_segment((REFERENCE, shared), (REFERENCE, shared)),
                model_segment(null_dot, null_dot),
            )
        ),
        "roots": encode(point(), plane("PLANE_INVALID"), axis("FROM_REVFACE"), matrix(1)),
        "nothing": encode(),
        # These are refused, or are read with defaults.
        "no_fields": encode(*(Record(0x030A0000 + row) for row in range(1, 15))),
        "unknown_method": encode(plane("gsl_FROM_POINT")),
        "unknown_class": encode(Record(0x7F0F0F0F, [("_point", 0, RECORD, point())])),
        "unknown_fields": encode(
            Record(0x030A0001, [("u", 0, STRING, "text"), *doubles(_z=1.0), ("_x", -1, BOOLEAN, False)])
        ),
        "other_kinds": encode(Record(0x030A0004, [("_ok", 0, INTEGER, 1), ("_point", 1, RECORD, vector())])),
        "other_entries": encode(array(0x030A000E, 0x030A0005, plane())),
        "small_matrix": encode(
            Record(0x030A0002, [("DDBmatrix", -1, RECORD, Record(COLLECTION, collection=82, matrix=(1, 2, [1.0, 2.0])))])
        ),
        "circle": encode(Record(1, [("point1", 0, OBJECT, Record(0x030A0005, [("point1", 0, REFERENCE, 1)]))])),
        "own_record": encode(Record(0x030A0007, [("_low", -1, RECORD, 0)])),
        "announces_more": frame(b"\0\xff\xff\xff\xff\x0f"),
        "cut": encode(plane())[:-9],
        "other_version": b"gslr\x03\0\0",
    }
    deep = point()
    for _ in range(40):
        deep = Record(0x030A0007, [("_low", -1, RECORD, deep)])
    seeds["nested"] = encode(deep)
    return seeds


def query_seeds():
    nan, inf, tiny = float("nan"), float("inf"), 5e-324
    x, y, z, o = (1.0, 0.0, 0.0), (0.0, 1.0, 0.0), (0.0, 0.0, 1.0), (0.0, 0.0, 0.0)
    corners = (0.0, 0.0, 0.0, 4.0, 0.0, 0.0, 0.0, 4.0, 0.0)
    down = (0.0, 0.0, -2.0)
    # The numbers of lines and planes: a point, a point of each line and of the plane, two directions, the normal.
    # Those of segments and triangles: four points and a direction.
    return {
        "vectors": raw(0, *x, *y, *z, 0.0, *o, 1.5),
        "vectors_parallel": raw(0, *x, *x, *x, 1e-7, *o, 3.141592653589793),
        "vectors_special": raw(0, nan, inf, tiny, -inf, -0.0, 1e308, *o, nan, *o, inf),
        "line_and_plane": raw(1, 1.0, 2.0, 3.0, *o, 1.0, 1.0, 0.0, 0.0, 0.0, -5.0, *x, *y, *z),
        "line_in_plane": raw(1, *o, *o, *y, *o, *x, *x, *z),
        "line_special": raw(1, inf, *(nan,) * 8, 1e308, 1e-308),
        "segments_cross": raw(2, -1.0, 0.0, 0.0, *x, 0.0, -1.0, 0.0, *y, *z),
        "segments_overlap": raw(2, *o, *x, 0.5, 0.0, 0.0, 2.0, 0.0, 0.0, *x),
        "segments_of_no_length": raw(2, *o, *o, *o, *o, *o),
        "segments_skew": raw(2, -1.0, 0.0, 0.0, *x, 0.0, -1.0, 3.0, 0.0, 1.0, 3.0, *z),
        "triangle_below_point": raw(3, *corners, 1.0, 1.0, 5.0, *down),
        "triangle_beside_point": raw(3, *corners, 9.0, -1.0, 2.0, -1.0, 0.0, 0.0),
        "triangle_of_no_area": raw(3, *o, *x, *x, 1.0, 1.0, 5.0, *down),
        "triangle_special": raw(3, *corners, nan, inf, 1e308, tiny, 1e308, -0.0),
        "vectors_stale": raw([2, 0], *x, 1, 7.5, *y, 0, *z, 1, nan, 0.0, *o, 1.5),
        "line_with_tolerances": raw([4, 1, 2, 3, 1], 0.5, 1, 1.0, 2.0, 3.0, *o, *x, *y, *x, *y, *z),
        "segments_with_tolerances": raw([6, 2, 0, 0, 2], -1.0, 0.0, 0.0, *x, 0.0, -1.0, 0.5, *y, *z, 1, 2.0),
    }


def raw(choice, *parts):
    """The input of a target whose doubles are their bits: a byte for the choice, then bytes and doubles.

    A list in place of the choice is all first bytes."""
    first = choice if isinstance(choice, list) else [0, choice]
    return bytes(first) + b"".join(bytes([p]) if isinstance(p, int) else struct.pack("<d", p) for p in parts)


def lattice(*numbers):
    """The input of a target whose doubles are one byte each, in quarters."""
    return bytes([1]) + bytes(number & 0xFF for number in numbers)


def sweep_seeds():
    nan, inf, tiny = float("nan"), float("inf"), 5e-324
    low, high = (0.0, 0.0, 0.0, 4.0, 0.0, 0.0, 0.0, 4.0, 0.0), (1.0, 1.0, 5.0, 3.0, 1.0, 5.0, 1.0, 3.0, 6.0)
    edge_on = (0.0, 0.0, 3.0, 4.0, 0.0, 3.0, 2.0, 0.0, 6.0)
    up = (0.0, 0.0, 1.0)
    across, along = (0.0, 0.0, 0.0, 4.0, 0.0, 0.0), (1.0, 3.0, 0.0, 3.0, 3.0, 0.0)
    return {
        "triangles": raw(0, *low, *high, *up, 3),
        "triangles_one_sided": raw(0, *low, *high, *up, 0),
        "triangles_edge_on": raw(0, *low, *edge_on, *up, 7, 0.5),
        "triangles_both_edge_on": raw(0, *edge_on, *edge_on, *up, 15, 0.0, 10.0),
        "triangles_special": raw(0, *low, nan, inf, *(1e308,) * 7, 0.0, tiny, nan, 15, nan, inf),
        "triangles_lattice": lattice(0, 0, 0, 0, 16, 0, 0, 0, 16, 0, 4, 4, 20, 12, 4, 20, 4, 12, 24, 0, 0, 4, 3),
        "segments": raw(1, *across, *along, 0.0, 1.0, 0.0, 3),
        "segments_along": raw(1, *across, *along, 1.0, 0.0, 0.0, 7, 0.25),
        "segments_special": raw(1, nan, *across[1:], inf, *along[1:], tiny, 1e308, -0.0, 11, 5.0),
        "segments_lattice": lattice(1, 0, 0, 0, 16, 0, 0, 4, 12, 0, 12, 12, 0, 0, 4, 0, 3),
    }


def value_seeds():
    nan, inf, tiny = float("nan"), float("inf"), 5e-324
    return {
        "comparisons": raw(0, 1.0, 1.0 + 1e-6, -2.5, -2.5, 0.0, -0.0, 1e10, 1e10 + 1.0, 1e-6, 131),
        "comparisons_special": raw(0, nan, nan, inf, -inf, tiny, 0.0, 1e308, -1e308, nan, 0),
        "boxes": raw(1, *(float(k % 5) for k in range(40))),
        "boxes_special": raw(1, nan, inf, -inf, *(1e308, -1e308, tiny) * 10),
        "matrices": raw(2, *(1.0, 0.0, 0.0, 7.0, 0.0, 1.0, 0.0, 8.0, 0.0, 0.0, 1.0, 9.0, 0.0, 0.0, 0.0, 1.0), 1.0, 2.0, 3.0),
        "matrices_special": raw(2, *(nan, inf, 1e308, tiny) * 6),
    }


def solver_seeds():
    return {
        "solve_three": lattice(0, 3, 8, 4, 0, 4, 12, -4, 0, 4, 16, 1, 2, 3),
        "solve_singular": lattice(0, 2, 4, 8, 4, 8, 1, 1),
        "solve_forty": lattice(0, 40, *((7 * k * k + 3 * k) % 251 for k in range(1640))),
        "solve_special": raw(0, 2, float("nan"), float("inf"), 1e308, 5e-324, 1.0, -0.0),
        # Bit 9 * k + k + 1 is the edge from k to the next.
        "label_path": lattice(1, 9, 1, *sum(1 << (10 * k + 1) for k in range(8)).to_bytes(11, "little")),
        "label_both_ways": lattice(1, 20, 0, *((5 * k) % 256 for k in range(50))),
    }


def engine_bits():
    """Scenes whose numbers have long mantissas, sizes that differ, and gaps of the last place."""
    third, up = 1.0 / 3.0, 1.0 + 2.0**-52

    def body(*corners):
        return [len(corners) // 3 - 1, *(part for corner in corners for part in (0, *corner))]

    def scene(exponent, name, one_sided, limit, rules, direction, moving, fixed):
        return raw([0, exponent, name, one_sided, limit, rules], *direction, *moving, *fixed)

    floor = body((-5.1, -4.9, 0.1), (5.3, -5.2, 0.1), (0.2, 5.7, 0.1))
    slope = body((-5.1, -4.9, 0.1), (5.3, -5.2, 0.3), (0.2, 5.7, 0.7))
    tip = body((third, third, 0.1 + 2.0**-54), (1.1, 0.2, 2.3), (0.3, 1.4, 2.1))
    twin = body((third, third, up), (1.1, 0.2, 2.3), (0.3, 1.4, 2.1), (-third, third, up), (1.1, 0.2, 2.3), (0.3, 1.4, 2.1))
    tiny = body((0.0, 0.0, 5e-324), (1e-300, 0.0, 2e-310), (0.0, 1e-300, 2e-310))
    down, aslant = (0.0, 0.0, -1.0), (0.1, -0.3, -0.7)
    return {
        "bits_gap_of_one_place": scene(0, 1, 0, 0, 1, down, tip, floor),
        "bits_aslant": scene(0, 2, 0, 0, 1, aslant, tip, slope),
        "bits_near_tie": scene(0, 3, 0, 3, 1, aslant, twin, slope),
        "bits_one_sided": scene(0, 4, 1, 0, 1, down, twin, floor),
        "bits_subnormal": scene(0, 5, 0, 0, 1, (0.0, 1e-300, -1.0), tiny, floor),
        "bits_far": scene(5, 6, 0, 2, 0, (1e-300, 0.25, -1.0), twin, slope),
    }


def engine_seeds():
    def body(*corners):
        return [len(corners) // 3 - 1, *(number for corner in corners for number in (0, *corner))]

    floor = body((-20, -20, 0), (20, -20, 0), (0, 20, 0))
    tip = body((0, 0, 12), (4, 0, 20), (0, 4, 20))
    pair = body((0, 0, 12), (4, 0, 20), (0, 4, 20), (0, 0, 12), (0, 4, 20), (-4, 0, 20))
    edge = body((-8, 0, 12), (8, 0, 12), (0, 0, 20))
    bar = body((0, -8, 4), (0, 8, 4), (0, 0, -4))

    def scene(exponent, name, limit, rules, direction, moving, fixed):
        return lattice(exponent, name, 0, limit, rules, *direction, *moving, *fixed)

    down = (0, 0, -4)
    return {
        "vertex_on_face": scene(0, 0, 0, 0, down, tip, floor),
        "face_on_vertex": scene(0, 1, 0, 1, (0, 0, 4), floor, tip),
        "tie": scene(0, 2, 0, 1, down, pair, floor),
        "edge_on_edge": scene(0, 3, 3, 1, down, edge, bar),
        "apart": scene(0, 4, 0, 1, (0, 0, 4), tip, floor),
        "at_start": scene(0, 5, 1, 1, down, floor, floor),
        "one_sided": lattice(0, 8, 1, 0, 1, *down, *pair, *floor),
        "large": scene(5, 6, 2, 0, (1, 2, -9), pair, floor),
        "small": scene(7, 7, 4, 0, (1, 2, -9), pair, floor),
        **engine_bits(),
    }


def command_seeds():
    commands = {
        "sweep": (0, "a.stl b.stl -d -z --json - --force"),
        "sweep_all": (0, "a.stl b.obj c.ply --direction=0,0,-1 --offset 1,2,3 --max-distance 5 --output x.glb --view v.html "
                         "--picture p.pdf --patch --patch-pairs 9 --threads 2 --progress plain --verbose"),
        "sweep_many": (0, "- b.stl --format stl --sphere 100 --solid --quiet"),
        "sweep_lines": (0, "a b --directions - --clearance 0.5 --pose p --allowance=-1e-4"),
        "sweep_wrong": (0, "--directoin -z a b --output  -x"),
        "help": (0, "--help"),
        "mesh_check": (1, "check a.stl b.stl --json out.json"),
        "mesh_move": (1, "move a.stl b.off --matrix m --force"),
        "mesh_convert": (1, "convert a.stl b.ply"),
        "model_show": (2, "m.gslr show axis --json -"),
        "model_diff": (2, "m.gslr diff n.db"),
        "model_convert": (2, "m.gslr convert n.db --force"),
    }
    return {name: bytes([program]) + text.replace(" ", "\n").encode() for name, (program, text) in commands.items()}


SEEDS = {
    "fuzz_queries": query_seeds,
    "fuzz_record_read": record_seeds,
    "fuzz_sweeps": sweep_seeds,
    "fuzz_values": value_seeds,
    "fuzz_solver": solver_seeds,
    "fuzz_engine": engine_seeds,
    "fuzz_command_line": command_seeds,
}


def main():
    if sys.argv[1:] not in ([], ["--check"]):
        print(__doc__, file=sys.stderr)
        return 2
    stale = []
    for target, make in SEEDS.items():
        seeds = make()
        folder = CORPUS / target
        if not sys.argv[1:]:
            folder.mkdir(parents=True, exist_ok=True)
        there = {p.name: p for p in folder.iterdir()} if folder.is_dir() else {}
        for name in sorted(there.keys() | seeds.keys()):
            if name in there and seeds.get(name) == there[name].read_bytes():
                continue
            stale.append(f"{target}/{name}")
            if sys.argv[1:]:
                continue
            if name in seeds:
                (folder / name).write_bytes(seeds[name])
            else:
                there[name].unlink()
    for name in stale:
        print(f"{name}: is not the seed that this program writes" if sys.argv[1:] else name, file=sys.stderr)
    return 1 if stale and sys.argv[1:] else 0


if __name__ == "__main__":
    sys.exit(main())
