"""Renders small documents with docs/reference/render.py, and compares pages, places and links."""

import os
import pathlib
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path[:0] = [str(ROOT / "docs/reference"), str(ROOT / "scripts")]
try:
    import render
except ImportError:
    # A Python of the user's own may lack what Debian's has as a package.
    if os.path.realpath(sys.executable) == os.path.realpath("/usr/bin/python3"):
        raise
    os.execv("/usr/bin/python3", ["/usr/bin/python3", "-B", *sys.argv])
import check_links


class Render(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.tree = pathlib.Path(folder.name) / "tree"
        self.out = pathlib.Path(folder.name) / "out"
        self.file("docs/reference/pages.css", "")
        self.file("docs/reference/algorithms.md", "# Algorithms\n")
        self.file("docs/index.md", "# Front\n")
        self.page("reference/index.html")
        self.page("reference/algorithms.html")

    def file(self, name, text):
        path = self.tree / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)

    def page(self, name):
        (self.out / name).parent.mkdir(parents=True, exist_ok=True)
        (self.out / name).write_text("")

    def made(self, name):
        """Renders the tree and returns one page; every link of every page is valid."""
        render.Site(self.tree, self.out).make()
        self.assertEqual(list(check_links.problems(self.out)), [])
        return (self.out / name).read_text()

    def test_links_between_documents_lead_to_pages_and_places(self):
        self.file("README.md", "# A\n[guide](docs/guide.md#part-two) and [why](docs/decisions/0001-x.md)\n\n## Back here\n")
        self.file("docs/guide.md", "# Guide\n## Part two\n[back](../README.md#back-here), [own](#part-two)\n")
        self.file("docs/decisions/0001-x.md", "# X\n[guide](../guide.md)\n")
        page = self.made("README.html")
        self.assertIn('href="guide.html#part-two"', page)
        self.assertIn('href="decisions/0001-x.html"', page)
        guide = (self.out / "guide.html").read_text()
        self.assertIn('<h2 id="part-two">', guide)
        self.assertIn('href="README.html#back-here"', guide)
        self.assertIn('href="../guide.html"', (self.out / "decisions/0001-x.html").read_text())

    def test_links_to_the_reference_lead_to_its_pages(self):
        self.file("README.md", "[algorithms](docs/reference/algorithms.md), [all](docs/reference/)\n")
        page = self.made("README.html")
        self.assertIn('href="reference/algorithms.html"', page)
        self.assertIn('href="reference/index.html"', page)

    def test_files_are_copied_and_folders_listed(self):
        self.file("docs/guide.md", "![p](p.png) [schema](s.json) [programs](../examples)\n")
        for name in ("docs/p.png", "docs/s.json", "examples/a.cpp", "examples/deep/b.py", "examples/__pycache__/b.pyc"):
            self.file(name, name)
        self.assertIn('href="examples/index.html"', self.made("guide.html"))
        for name in ("p.png", "s.json", "examples/a.cpp", "examples/deep/b.py"):
            self.assertTrue((self.out / name).read_text().endswith(name), name)
        self.assertIn('<a href="deep/index.html">deep</a>', (self.out / "examples/index.html").read_text())
        self.assertFalse((self.out / "examples/__pycache__").exists())

    def test_a_listed_document_has_its_title(self):
        self.file("README.md", "[why](docs/decisions)\n")
        self.file("docs/decisions/0001-x.md", "# Why <x>\n")
        self.made("README.html")
        self.assertIn('<a href="0001-x.html">Why &lt;x&gt;</a>', (self.out / "decisions/index.html").read_text())

    def test_a_link_that_leads_nowhere_is_refused_with_its_document(self):
        for link in ("nowhere.md", "../../outside.md"):
            self.file("docs/guide.md", f"[x]({link})\n")
            with self.assertRaisesRegex(ValueError, f"docs/guide.md: the link to {link} leads nowhere"):
                render.Site(self.tree, self.out).make()
            for path in self.out.glob("*.html"):
                path.unlink()

    def test_links_to_other_hosts_stay(self):
        self.file("README.md", "[x](https://x.example/a.md)\n")
        self.assertIn('href="https://x.example/a.md"', self.made("README.html"))

    def test_equal_headings_have_places_of_their_own(self):
        self.file("README.md", "# A\n## Use, `it`: now\n## Use, `it`: now\n")
        page = self.made("README.html")
        self.assertIn('id="use-it-now"', page)
        self.assertIn('id="use-it-now-1"', page)

    def test_two_files_with_one_place_are_refused(self):
        self.file("guide.md", "# A\n")
        self.file("docs/guide.md", "# B\n")
        with self.assertRaisesRegex(ValueError, "guide.html: two files have this place"):
            render.Site(self.tree, self.out).make()

    def test_tables_and_code_are_rendered(self):
        self.file("README.md", "| a | b |\n|---|---|\n| 1 | `x<y` |\n\n```cpp\nif (a < b) c();\n```\n")
        page = self.made("README.html")
        self.assertIn("<td>1</td>", page)
        self.assertIn("<code>x&lt;y</code>", page)
        self.assertIn('<pre><code class="language-cpp">if (a &lt; b) c();', page)


if __name__ == "__main__":
    unittest.main()
