"""Draws the pictures of the algorithms again: they must be as they are in docs/reference/."""

import pathlib
import subprocess
import sys
import tempfile
import unittest
import xml.dom.minidom

REFERENCE = pathlib.Path(__file__).resolve().parents[2] / "docs/reference"


class Drawings(unittest.TestCase):
    def test_the_committed_drawings_are_as_drawn(self):
        with tempfile.TemporaryDirectory() as folder:
            subprocess.run([sys.executable, "-B", str(REFERENCE / "make_drawings.py"), folder], check=True)
            drawn = {path.name: path.read_text() for path in pathlib.Path(folder).iterdir()}
        self.assertEqual(drawn, {path.name: path.read_text() for path in REFERENCE.glob("*.svg")})
        self.assertEqual(len(drawn), 7)

    def test_every_drawing_is_in_the_page_of_the_algorithms_and_within_its_frame(self):
        page = (REFERENCE / "algorithms.md").read_text()
        for path in REFERENCE.glob("*.svg"):
            self.assertIn(f"]({path.name})", page)
            root = xml.dom.minidom.parse(str(path)).documentElement
            width, height = float(root.getAttribute("width")), float(root.getAttribute("height"))
            for text in root.getElementsByTagName("text"):
                self.assertTrue(0 <= float(text.getAttribute("x")) <= width, path.name)
                self.assertTrue(0 <= float(text.getAttribute("y")) <= height, path.name)


if __name__ == "__main__":
    unittest.main()
