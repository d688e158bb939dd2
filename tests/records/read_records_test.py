"""The reader made from docs/records.md reads every golden file, and refuses every damaged one."""

import pathlib
import struct
import sys
import unittest

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE))
import read_records

GOLDEN = sorted((HERE.parent / "golden/records").glob("*.gslr"))


def framed(body, unused=0):
    header = b"gslr\x02\0" + struct.pack("<HQ", unused, len(body))
    sums = struct.pack("<I", read_records.checksum(bytes(8) + body))
    return header + struct.pack("<I", read_records.checksum(header)) + body + sums


def body_with(prefix, serial):
    """One record without fields, of the class 1 and of an identity."""
    return bytes([0, 0, 1, 1, 0, 0, 1]) + struct.pack("<Q", prefix) + bytes([1, 0, 0, 0, 0, 1, 0, 0, 1, 0, 1]) + serial


class ReadRecords(unittest.TestCase):
    def test_what_has_one_form_is_refused_in_any_other(self):
        _, _, records = read_records.read_records(framed(body_with(0, b"\x01")))
        self.assertEqual(records[0][2], (0, 1))
        for refused in (
            framed(body_with(0, b"\x01"), unused=1),
            framed(body_with(0, b"\x01"), unused=256),
            framed(body_with(0, b"\0")),
            framed(body_with(0, b"\x81\0")),
        ):
            with self.assertRaises(read_records.Refused):
                read_records.read_records(refused)

    def test_every_golden_file_reads_as_its_text(self):
        self.assertTrue(GOLDEN)
        for path in GOLDEN:
            expected = path.with_suffix(".txt").read_text()
            self.assertEqual("\n".join(read_records.lines(path.read_bytes())) + "\n", expected, path)

    def test_every_single_bit_flip_is_refused(self):
        data = bytearray(GOLDEN[0].read_bytes())
        for bit in range(8 * len(data)):
            data[bit // 8] ^= 1 << bit % 8
            with self.assertRaises(read_records.Refused, msg=bit):
                read_records.read_records(bytes(data))
            data[bit // 8] ^= 1 << bit % 8

    def test_every_shorter_or_longer_form_is_refused(self):
        data = GOLDEN[0].read_bytes()
        for length in range(len(data)):
            with self.assertRaises(read_records.Refused, msg=length):
                read_records.read_records(data[:length])
        with self.assertRaises(read_records.Refused):
            read_records.read_records(data + b"\0")

    def test_checksum_of_the_document(self):
        self.assertEqual(read_records.checksum(b"123456789"), 0xE3069283)


if __name__ == "__main__":
    unittest.main()
