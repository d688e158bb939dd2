"""Runs the checks of the house on trees that break a rule or hold nothing: each must fail and say why."""

import contextlib
import io
import pathlib
import subprocess
import sys
import tempfile
import unittest
from unittest import mock

SCRIPTS = pathlib.Path(__file__).resolve().parents[2] / "scripts"
sys.path.insert(0, str(SCRIPTS))
import house_check

# What each check that needs no file of its own says about an empty tree.
NOTHING_FOUND = {
    "check_bodies.py": "no function bodies found",
    "check_documents.py": "no documents found",
    "check_includes.py": "no sources found",
    "check_nodiscard.py": "no declarations found",
    "check_tests.py": "no sources found",
    "check_umbrella.py": "no exported functions found",
}


class HouseCheck(unittest.TestCase):
    def outcome_of(self, find):
        said = io.StringIO()
        with mock.patch.object(sys, "argv", ["check", "tree"]), contextlib.redirect_stderr(said):
            return house_check.run(find, "nothing found"), said.getvalue()

    def test_a_tree_that_keeps_the_rule_passes_without_a_word(self):
        self.assertEqual(self.outcome_of(lambda root: ([], 3)), (0, ""))

    def test_each_problem_is_a_line_and_fails(self):
        self.assertEqual(self.outcome_of(lambda root: (["a: wrong", "b: wrong"], 3)), (1, "a: wrong\nb: wrong\n"))

    def test_a_check_of_nothing_fails(self):
        self.assertEqual(self.outcome_of(lambda root: ([], 0)), (1, "tree: nothing found\n"))

    def test_the_root_is_the_argument_or_else_the_tree_of_the_script(self):
        roots = []
        with mock.patch.object(sys, "argv", ["check"]):
            house_check.run(lambda root: (roots.append(root), ([], 1))[1], "nothing found")
        self.outcome_of(lambda root: (roots.append(root), ([], 1))[1])
        self.assertEqual(roots, [SCRIPTS.parent, "tree"])

    def test_every_check_refuses_an_empty_tree(self):
        for script, nothing in NOTHING_FOUND.items():
            with tempfile.TemporaryDirectory() as folder:
                done = subprocess.run([sys.executable, "-B", SCRIPTS / script, folder], capture_output=True, text=True)
            self.assertEqual(done.returncode, 1, script)
            self.assertIn(f"{folder}: {nothing}\n", done.stderr, script)


if __name__ == "__main__":
    unittest.main()
