"""Reads the byte form of records as docs/records.md describes it, with the standard library alone.

usage: read_records.py FILE...

Prints the roots and the records of each file, a line for each root, record and field.
"""

import struct
import sys


class Refused(Exception):
    pass


def checksum(data, table=[]):
    if not table:
        for byte in range(256):
            for _ in range(8):
                byte = byte >> 1 ^ (0x82F63B78 if byte & 1 else 0)
            table.append(byte)
    total = 0xFFFFFFFF
    for byte in data:
        total = total >> 8 ^ table[(total ^ byte) & 0xFF]
    return total ^ 0xFFFFFFFF


def body_of(data):
    if data[:4] != b"gslr":
        raise Refused("not records")
    if len(data) < 20 or data[4] != 2:
        raise Refused("cut, or of another version")
    if struct.unpack_from("<I", data, 16)[0] != checksum(data[:16]):
        raise Refused("damaged header")
    if data[5] != 0:
        raise Refused("unknown features")
    if data[6] != 0 or data[7] != 0:
        raise Refused("bytes 6 and 7 are not 0")
    (length,) = struct.unpack_from("<Q", data, 8)
    blocks = -(-length // 2**20)
    if len(data) != 20 + length + 4 * blocks:
        raise Refused("another length than announced")
    body = data[20 : 20 + length]
    for i in range(blocks):
        (expected,) = struct.unpack_from("<I", data, 20 + length + 4 * i)
        if checksum(struct.pack("<Q", i) + body[i * 2**20 : (i + 1) * 2**20]) != expected:
            raise Refused(f"damaged block {i}")
    return body


class Body:
    def __init__(self, data):
        self.data = data
        self.at = 0

    def take(self, count):
        if count > len(self.data) - self.at:
            raise Refused("ends too early")
        self.at += count
        return self.data[self.at - count : self.at]

    def byte(self):
        return self.take(1)[0]

    def varint(self):
        value = 0
        for shift in range(0, 70, 7):
            byte = self.byte()
            value |= (byte & 0x7F) << shift
            if byte < 0x80:
                break
        if byte == 0 and shift != 0:
            raise Refused("number takes more bytes than it needs")
        if byte < 0x80 and value < 2**64:
            return value
        raise Refused("number too long")

    def zigzag(self):
        value = self.varint()
        return -(value // 2) - 1 if value % 2 else value // 2

    def text(self):
        return self.take(self.varint()).decode("utf-8", "replace")

    def double(self):
        return struct.unpack("<d", self.take(8))[0]


OBJECT = 5


def read_shape(body, names, classes):
    """(type id, class, collection, fields); a field is (name, index, kind)."""
    type_id, class_name = classes[body.varint()]
    collection = body.varint()
    fields = [(names[body.varint()], body.zigzag(), body.byte()) for _ in range(body.varint())]
    return type_id, class_name, collection, fields


def read_value(body, kind, texts, objects):
    if kind == 0:
        return body.zigzag()
    if kind == 1:
        return body.double()
    if kind == 2:
        return bool(body.byte())
    if kind == 3:
        return texts[body.varint()]
    number = body.varint()
    if kind == OBJECT:
        return f"object {number // 2} record {objects[number // 2]}"
    return number


def read_elements(body, collection, texts, objects):
    """The elements, and the entries of a list as (kind, value)."""
    if collection == 57:
        return [body.varint() for _ in range(body.varint())], []
    if collection == 82:
        rows, columns = body.varint(), body.varint()
        return [rows, columns] + [body.double() for _ in range(rows * columns)], []
    entries = []
    if collection == 1:
        kind = body.byte()
        while kind != 0xFF:
            entries.append(read_entry(body, kind, texts, objects))
            kind = body.byte()
    elif collection != 0:
        raise Refused("unknown collection")
    return [], entries


def read_entry(body, kind, texts, objects):
    start = body.at
    value = read_value(body, kind, texts, objects)
    return stored_kind(body, kind, start), value


def stored_kind(body, kind, start):
    """A field that refers to an object of another field counts as kind 6."""
    return 6 if kind == OBJECT and body.data[start] % 2 else kind


def read_record(body, shapes, prefixes, texts, objects):
    type_id, class_name, collection, shape_fields = shapes[body.varint()]
    number, identity = body.varint(), (0, 0)
    if number:
        identity = (prefixes[number - 1], body.varint())
        if identity == (0, 0):
            raise Refused("null identity with a prefix")
    fields = []
    for name, index, kind in shape_fields:
        start = body.at
        value = read_value(body, kind, texts, objects)
        fields.append((name, index, stored_kind(body, kind, start), value))
    elements, entries = read_elements(body, collection, texts, objects)
    fields += [("", -1, kind, value) for kind, value in entries]
    return type_id, class_name, identity, collection, elements, fields


def read_records(data):
    """The name of the writer, the roots as (name, record), and the records as (type id, class, (prefix, serial),
    collection, elements, fields); a field is (name, index, kind, value)."""
    body = Body(body_of(data))
    writer = body.text()
    names = [body.text() for _ in range(body.varint())]
    classes = [(body.varint(), body.text()) for _ in range(body.varint())]
    texts = [body.text() for _ in range(body.varint())]
    prefixes = [struct.unpack("<Q", body.take(8))[0] for _ in range(body.varint())]
    shapes = [read_shape(body, names, classes) for _ in range(body.varint())]
    objects = [body.varint() for _ in range(body.varint())]
    roots = [(body.text(), body.varint()) for _ in range(body.varint())]
    records = [read_record(body, shapes, prefixes, texts, objects) for _ in range(body.varint())]
    if body.at != len(body.data):
        raise Refused("bytes follow the last record")
    return writer, roots, records


def shown(value):
    if isinstance(value, float):
        return value.hex()
    return int(value) if isinstance(value, bool) else value


def lines(data):
    writer, roots, records = read_records(data)
    yield f"written by {writer}"
    for number, (name, record) in enumerate(roots):
        yield f'root {number} "{name}" record {record}'
    for number, (type_id, class_name, (prefix, serial), collection, elements, fields) in enumerate(records):
        yield f'record {number} 0x{type_id:08X} "{class_name}" {prefix:x}:{serial:x} collection {collection}'
        if elements:
            yield "  elements " + " ".join(str(shown(value)) for value in elements)
        for name, index, kind, value in fields:
            yield f"  {name or '-'} {index} kind {kind} {shown(value)}"


def main():
    for path in sys.argv[1:]:
        with open(path, "rb") as file:
            print("\n".join(lines(file.read())))
    return 0 if len(sys.argv) > 1 else 2


if __name__ == "__main__":
    sys.exit(main())
