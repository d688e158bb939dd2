"""Gives documents and tests that do not match to scripts/document_blocks.py."""

import pathlib
import subprocess
import sys
import tempfile
import unittest

SCRIPT = pathlib.Path(__file__).resolve().parents[2] / "scripts/document_blocks.py"
DOCUMENT = "```cpp\nint a;\n```\n\n```cpp main.cpp\nint b;\n```\n\n```\nint c;\n```\n\n```cpp\nint d;\n```\n"


class DocumentBlocks(unittest.TestCase):
    def run_with(self, test, page="page.md"):
        with tempfile.TemporaryDirectory() as name:
            folder = pathlib.Path(name)
            (folder / page).write_text(DOCUMENT)
            (folder / "test.cpp").write_text(test)
            done = subprocess.run([sys.executable, "-B", SCRIPT, folder / "out", folder / "test.cpp", folder / page],
                                  capture_output=True, text=True, check=False)
            written = {path.name: path.read_text() for path in (folder / "out").glob("*")}
            return done.returncode, done.stderr.replace(name, ""), written

    def test_the_blocks_without_a_file_name_are_written(self):
        self.assertEqual(self.run_with("#include BLOCK(page_1)\n#include BLOCK(page_2)\n"),
                         (0, "", {"page_1.inc": "int a;\n", "page_2.inc": "int d;\n"}))

    def test_a_hyphen_in_the_name_of_a_document_becomes_an_underscore(self):
        self.assertEqual(self.run_with("#include BLOCK(a_page_1)\n#include BLOCK(a_page_2)\n", "a-page.md")[2],
                         {"a_page_1.inc": "int a;\n", "a_page_2.inc": "int d;\n"})

    def test_a_block_that_no_test_includes_is_named(self):
        self.assertEqual(self.run_with("#include BLOCK(page_1)\n// #include BLOCK(page_2)\n"),
                         (1, "/test.cpp: the block page_2 is not included\n", {}))

    def test_a_block_that_no_document_has_is_named(self):
        self.assertEqual(self.run_with("#include BLOCK(page_1)\n#include BLOCK(page_2)\n#include BLOCK(page_3)\n"),
                         (1, "/test.cpp: the block page_3 is included, but no document has it\n", {}))


if __name__ == "__main__":
    unittest.main()
