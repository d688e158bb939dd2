"""Makes each line too long in turn: scripts/check_documents.py must name it."""

import pathlib
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "scripts"))
import check_documents

LONGEST = "word " * 23 + "words"
DOCUMENT = f"""# Title

{LONGEST}

| a table | {"may be wider than that " * 8} |

```
a block of code {"may be wider as well " * 8}
```

{"a-single-word" * 12}
"""


class CheckDocuments(unittest.TestCase):
    def problems_of(self, text):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder) / "docs/page.md"
            path.parent.mkdir()
            path.write_text(text)
            return check_documents.check(folder)[0]

    def test_a_document_that_keeps_the_rules_passes(self):
        self.assertEqual(len(LONGEST), 120)
        self.assertEqual(self.problems_of(DOCUMENT), [])

    def test_one_column_too_many_is_named(self):
        problems = self.problems_of(DOCUMENT.replace("words", "words."))
        self.assertEqual(problems, ["docs/page.md:3: the line has 121 columns, but at most 120 are allowed"])

    def test_prose_after_a_block_counts_again(self):
        problems = self.problems_of(DOCUMENT + "\n" + "more words " * 12)
        self.assertEqual(len(problems), 1, problems)
        self.assertTrue(problems[0].startswith("docs/page.md:13: "), problems)

    def test_an_open_block_hides_nothing(self):
        self.assertIn("not closed", self.problems_of("```\n" + "more words " * 12)[0])

    def test_another_version_is_named(self):
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder)
            (root / "page.md").write_text(DOCUMENT)
            (root / "gsl/include").mkdir(parents=True)
            (root / "gsl/include/gsl_Version.h").write_text(
                "#define GSL_VERSION_MAJOR 1\n#define GSL_VERSION_MINOR 2\n#define GSL_VERSION_PATCH 3\n")
            citation = root / "CITATION.cff"
            citation.write_text("cff-version: 1.2.0\nversion: 1.2.3\n")
            self.assertEqual(check_documents.check(folder)[0], [])
            citation.write_text("cff-version: 1.2.0\nversion: 1.2.2\n")
            self.assertEqual(check_documents.check(folder)[0],
                             ["CITATION.cff: the version is 1.2.2; expected 1.2.3"])

    def test_a_tree_without_documents_holds_none(self):
        with tempfile.TemporaryDirectory() as folder:
            self.assertEqual(check_documents.check(folder), ([], 0))


if __name__ == "__main__":
    unittest.main()
