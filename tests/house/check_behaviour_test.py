"""Separates the page of oddities, the comments and the tests: scripts/check_behaviour.py must say where."""

import pathlib
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "scripts"))
import check_behaviour

PAGE = check_behaviour.PAGE
TREE = {
    PAGE: "# Oddities\n\nSee [more](more.md).\n\n| name | what it does | where | test |\n|---|---|---|---|\n"
          "| `ties-go-down` | Half of it. | `gsl/a.cpp` | `Suite.TiesGoDownOnBothSides`, `Suite.Other` |\n",
    "gsl/a.cpp": "int f() {\n  // ties-go-down: callers count on it.\n  return 0;\n}\n",
    "docs/more.md": "Ties go down (`ties-go-down`), see `gsl-mesh-import`.\n",
    "tests/a_test.cpp": "TEST(Suite, TiesGoDownOnBothSides) {}\nRC_GTEST_PROP(Suite, Other, ()) {}\n",
}


class BehaviourNames(unittest.TestCase):
    def problems_with(self, file, old, new):
        self.assertIn(old, TREE[file])
        with tempfile.TemporaryDirectory() as folder:
            for name, text in {**TREE, file: TREE[file].replace(old, new)}.items():
                path = pathlib.Path(folder) / name
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_text(text)
            return check_behaviour.check(folder)[0]

    def refuses(self, file, old, new, reason):
        problems = self.problems_with(file, old, new)
        self.assertTrue(any(reason in problem for problem in problems), problems)

    def test_a_page_that_is_right_passes(self):
        self.assertEqual(self.problems_with(PAGE, "Half of it.", "All of it."), [])

    def test_a_test_that_does_not_exist_is_named(self):
        self.refuses(PAGE, "Suite.Other", "Suite.Gone", "there is no test Suite.Gone")
        self.refuses("tests/a_test.cpp", "TEST(Suite, Ties", "// TEST(Suite, Ties",
                     "there is no test Suite.TiesGoDownOnBothSides")

    def test_the_name_need_not_be_in_a_test(self):
        self.assertEqual(self.problems_with(PAGE, "`Suite.TiesGoDownOnBothSides`, ", ""), [])

    def test_a_comment_needs_a_reason(self):
        for bare in ("ties-go-down", "ties-go-down:", "ties-go-down: "):
            self.refuses("gsl/a.cpp", "ties-go-down: callers count on it.", bare,
                         "gsl/a.cpp: ties-go-down has no colon and reason after it")

    def test_a_comment_that_is_gone_is_named(self):
        self.refuses("gsl/a.cpp", "ties-go-down", "ties go down", "gsl/a.cpp has no comment of that name")
        self.refuses(PAGE, "gsl/a.cpp", "gsl/b.cpp", "gsl/b.cpp has no comment of that name")

    def test_a_comment_without_a_row_is_named(self):
        self.refuses("gsl/a.cpp", "return 0;", "return 0;\n  // ties-go-up-again\n",
                     "gsl/a.cpp: ties-go-up-again has no row")

    def test_a_name_on_a_linked_page_needs_a_row(self):
        self.refuses("docs/more.md", "(`ties-go-down`)", "(`ties-go-up-again`)",
                     "docs/more.md: ties-go-up-again has no row")

    def test_ordinary_comments_are_not_names(self):
        self.assertEqual(self.problems_with("gsl/a.cpp", "return 0;",
                                            "return 0; // an up-to-date-list of things\n// well-known\n"), [])

    def test_every_cell_is_needed(self):
        self.refuses(PAGE, "Half of it.", "", "says nothing")
        self.refuses(PAGE, "`gsl/a.cpp`", "everywhere", "names no file")
        self.refuses(PAGE, " | `gsl/a.cpp`", "", "has 3 cells")

    def test_two_rows_of_one_name_are_refused(self):
        row = TREE[PAGE].splitlines()[-1]
        self.refuses(PAGE, row, f"{row}\n{row}", "has two rows")


if __name__ == "__main__":
    unittest.main()
