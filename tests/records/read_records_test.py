"""The reader made from docs/records.md reads every golden file, and refuses every damaged one."""

import pathlib
import sys
import unittest

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE))
import read_records

GOLDEN = sorted((HERE.parent / "golden/records").glob("*.gslr"))


class ReadRecords(unittest.TestCase):
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
