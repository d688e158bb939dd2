"""Breaks links in every way that scripts/check_links.py must name."""

import pathlib
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "scripts"))
import check_links


class CheckLinks(unittest.TestCase):
    def problems(self, pages):
        with tempfile.TemporaryDirectory() as folder:
            for name, text in pages.items():
                path = pathlib.Path(folder) / name
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_text(text)
            return list(check_links.problems(pathlib.Path(folder)))

    def test_links_to_pages_places_and_other_hosts_pass(self):
        self.assertEqual(self.problems({
            "index.html": '<a href="deep/b.html#here">b</a><a href="#top" id="top"></a><a href="http://x.example/y">y</a>',
            "deep/b.html": '<p id="here"></p><a href="../index.html">up</a><a name="old"></a><a href="#old"></a>'}), [])

    def test_a_page_that_is_not_there_is_named(self):
        self.assertEqual(self.problems({"a.html": '<a href="b.html">b</a>'}),
                         ["a.html: the link to b.html leads nowhere"])

    def test_a_picture_that_is_not_there_is_named(self):
        for tag in ('<img src="p.svg"/>', '<object data="p.svg"></object>'):
            self.assertEqual(self.problems({"a.html": tag}), ["a.html: the link to p.svg leads nowhere"])

    def test_a_place_that_the_page_does_not_have_is_named(self):
        self.assertEqual(self.problems({"a.html": '<a href="b.html#no">b</a>', "b.html": '<p id="yes"></p>'}),
                         ["a.html: b.html#no names a place that the page does not have"])
        self.assertEqual(self.problems({"a.html": '<a href="#no">b</a>'}),
                         ["a.html: #no names a place that the page does not have"])

    def test_links_of_documents_in_markdown_lead_to_files(self):
        self.assertEqual(self.problems({
            "a.md": "[b](b.md#here) and `[c](c.md)`\n```\n[d](d.md)\n```\n![p](p.png) [x](https://x.example/)\n",
            "b.md": "[a](a.md), [e](../nowhere.md#e)"}),
            ["a.md: the link to p.png leads nowhere", "b.md: the link to ../nowhere.md#e leads nowhere"])

    def test_a_folder_without_pages_is_named(self):
        self.assertEqual(len(self.problems({"a.txt": ""})), 1)


if __name__ == "__main__":
    unittest.main()
