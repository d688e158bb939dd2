"""Reads the byte form of records as docs/records.md describes it, with the standard library alone.

usage: read_records.py FILE...

Prints the records of each file, a line for each record and each field.
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


def elements(body, collection):
    if collection == 57:
        return [body.varint() for _ in range(body.varint())]
    if collection == 82:
        rows, columns = body.varint(), body.varint()
        return [rows, columns] + [body.double() for _ in range(rows * columns)]
    if collection not in (0, 1):
        raise Refused("unknown collection")
    return []


def read_records(data):
    """The name of the writer, and the records as tuples (is_root, type_id, (prefix, serial), collection,
    elements, fields); a field is (name, index, kind, value)."""
    body = Body(body_of(data))
    writer = body.text()
    names = [body.text() for _ in range(body.varint())]
    prefixes = [struct.unpack("<Q", body.take(8))[0] for _ in range(body.varint())]
    last = [0] * len(prefixes)
    readers = [body.zigzag, body.double, body.byte, body.text] + [body.varint] * 4
    records = []
    for _ in range(body.varint()):
        is_root, type_id, number = body.byte(), body.varint(), body.varint()
        identity = (0, 0)
        if number:
            last[number - 1] = (last[number - 1] + body.zigzag()) % 2**64
            identity = (prefixes[number - 1], last[number - 1])
        collection = body.varint()
        held = elements(body, collection)
        fields = []
        for _ in range(body.varint()):
            name, index, kind = body.varint(), body.zigzag(), body.byte()
            fields.append((names[name - 1] if name else "", index, kind, readers[kind]()))
        records.append((is_root, type_id, identity, collection, held, fields))
    if body.at != len(body.data):
        raise Refused("bytes follow the last record")
    return writer, records


def lines(data):
    writer, records = read_records(data)
    yield f"written by {writer}"
    for number, (is_root, type_id, (prefix, serial), collection, held, fields) in enumerate(records):
        root = " root" if is_root else ""
        yield f"record {number}{root} 0x{type_id:08X} {prefix:x}:{serial:x} collection {collection}"
        if held:
            yield "  elements " + " ".join(v.hex() if isinstance(v, float) else str(v) for v in held)
        for name, index, kind, value in fields:
            yield f"  {name or '-'} {index} kind {kind} {value.hex() if isinstance(value, float) else value}"


def main():
    for path in sys.argv[1:]:
        with open(path, "rb") as file:
            print("\n".join(lines(file.read())))
    return 0 if len(sys.argv) > 1 else 2


if __name__ == "__main__":
    sys.exit(main())
