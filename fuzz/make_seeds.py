#!/usr/bin/env python3
"""Writes the seeds of fuzz_queries and fuzz_record_read into their folders under corpus/.

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

    def bytes(self, names, serials, number_of, is_root):
        out = bytes([1 if is_root else 0]) + varint(self.type_id)
        prefix, serial = self.uid
        if self.uid == (0, 0):
            out += varint(0)
        else:
            last = serials.setdefault(prefix, 0)
            step = (serial - last + 2**63) % 2**64 - 2**63
            out += varint(list(serials).index(prefix) + 1) + zigzag(step)
            serials[prefix] = serial
        out += varint(self.collection)
        if self.collection == 57:
            out += varint(len(self.numbers)) + b"".join(map(varint, self.numbers))
        elif self.collection == 82:
            rows, columns, entries = self.matrix
            out += varint(rows) + varint(columns) + struct.pack(f"<{len(entries)}d", *entries)
        out += varint(len(self.fields))
        for name, index, kind, value in self.fields:
            if name and name not in names:
                names.append(name)
            out += varint(names.index(name) + 1 if name else 0) + zigzag(index) + bytes([kind])
            if kind == INTEGER:
                out += zigzag(value)
            elif kind == DOUBLE:
                out += struct.pack("<d", value)
            elif kind == BOOLEAN:
                out += bytes([value])
            elif kind == STRING:
                out += text(value)
            elif kind == NULL:
                out += varint(value)
            else:
                out += varint(number_of[id(value)] if isinstance(value, Record) else value)
        return out


def encode(*roots):
    """Returns the byte form of a store with these roots."""
    order = []

    def number(record):
        order.append(record)
        for _, _, kind, value in record.fields:
            if kind in (RECORD, OBJECT) and isinstance(value, Record):
                number(value)

    for root in roots:
        number(root)
    number_of = {id(record): i for i, record in enumerate(order)}
    names, serials = [], {}
    body = b"".join(r.bytes(names, serials, number_of, any(r is root for root in roots)) for r in order)
    head = text(f"gsl_geometry {VERSION}") + varint(len(names)) + b"".join(map(text, names))
    head += varint(len(serials)) + b"".join(struct.pack("<Q", prefix) for prefix in serials)
    return frame(head + varint(len(order)) + body)


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


def query(choice, *values):
    return bytes([choice]) + struct.pack(f"<{len(values)}d", *values)


def query_seeds():
    nan, inf, tiny = float("nan"), float("inf"), 5e-324
    x, y, z, o = (1.0, 0.0, 0.0), (0.0, 1.0, 0.0), (0.0, 0.0, 1.0), (0.0, 0.0, 0.0)
    low, high = (0.0, 0.0, 0.0, 4.0, 0.0, 0.0, 0.0, 4.0, 0.0), (1.0, 1.0, 5.0, 3.0, 1.0, 5.0, 1.0, 3.0, 6.0)
    return {
        "vectors": query(0, *x, *y, *z, 0.0, *o, 1.5),
        "vectors_parallel": query(0, *x, *x, *x, 1e-7, *o, 3.141592653589793),
        "vectors_special": query(0, nan, inf, tiny, -inf, -0.0, 1e308, *o, nan, *o, inf),
        "line_and_plane": query(1, 1.0, 2.0, 3.0, *o, *x, *z, 1.0, 1.0, 0.0, 0.0, 0.0, 5.0, *z),
        "line_in_plane": query(1, *o, *o, *x, *y, *x, *o, *z),
        "line_special": query(1, inf, *(nan,) * 8, 1e308, 1e-308),
        "segments_cross": query(2, -1.0, 0.0, 0.0, *x, 0.0, -1.0, 0.0, *y, *z, 0.1, 0.1, 1.0, *z),
        "segments_overlap": query(2, *o, *x, 0.5, 0.0, 0.0, 2.0, 0.0, 0.0, *x, *o, *y),
        "segments_of_no_length": query(2, *o, *o, *o, *o, *o, *o),
        "triangles": query(3, *low, *high, 1.0, 100.0, *z, 0.5),
        "triangles_edge_on": query(3, *low, *(0.0, 0.0, 3.0, 4.0, 0.0, 3.0, 2.0, 0.0, 6.0), -1.0, 100.0, *z, 0.0),
        "triangles_of_no_area": query(3, *o, *x, *x, *high, 1.0, 100.0, *z, 0.0),
        "triangles_special": query(3, *low, nan, inf, *(1e308,) * 7, 1.0, inf, 0.0, 0.0, tiny, nan),
    }


def main():
    if sys.argv[1:] not in ([], ["--check"]):
        print(__doc__, file=sys.stderr)
        return 2
    stale = []
    for target, seeds in (("fuzz_queries", query_seeds()), ("fuzz_record_read", record_seeds())):
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
