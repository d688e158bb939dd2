"""What scripts/coverage reports and refuses, on counts that are typed and on a program that clang counts."""

import contextlib
import io
import json
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "scripts"))
import coverage_report

# Four lines of code: 1, 2, 3 and 5.
SOURCE = """int Sign(int a) {
  if (a < 0)
    return -1;

  return a > 0 || a != a;
}
"""
ENTRY = """# Ways that no test can take.

file: room/a.cpp
line: return a > 0 || a != a;
never: a != a is true
why: a whole number equals itself
"""


def function(*counts, entered=7, left=4, filename="room/a.cpp"):
    """Returns SOURCE as llvm-cov exports it, with the counts of its conditions: how often each was true, and false."""
    regions = [[1, 17, 6, 2, entered, 0, 0, 0], [2, 7, 2, 12, entered, 0, 0, 0], [2, 13, 3, 5, counts[0][0], 0, 0, 3],
               [3, 5, 3, 14, counts[0][0], 0, 0, 0], [3, 15, 5, 3, left, 0, 0, 3], [5, 3, 5, 25, left, 0, 0, 0],
               [5, 10, 5, 15, left, 0, 0, 0], [5, 19, 5, 25, counts[1][1], 0, 0, 0]]
    places = [[2, 7, 2, 12], [5, 10, 5, 15], [5, 19, 5, 25]]
    return {"filenames": [filename], "regions": regions,
            "branches": [[*place, *pair, 0, 0, 4] for place, pair in zip(places, counts)]}


class Coverage(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)
        self.write("room/a.cpp", SOURCE)

    def write(self, name, text):
        path = self.root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)
        return path

    def report_of(self, counts, listed="", rooms=("room",)):
        """Returns the exit status, the printed rows, the messages and what is missing."""
        counted, unreached = self.write("counts.json", json.dumps(counts)), self.write("unreached.txt", listed)
        rows, messages = io.StringIO(), io.StringIO()
        with contextlib.redirect_stdout(rows), contextlib.redirect_stderr(messages):
            status = coverage_report.main([counted, unreached, self.root / "missing.txt", *rooms], self.root)
        return (status, rows.getvalue().splitlines()[2:], messages.getvalue(),
                (self.root / "missing.txt").read_text().splitlines())

    def report(self, *instantiations, listed=""):
        found = [dict(one, filenames=[str(self.root / name) for name in one["filenames"]]) for one in instantiations]
        return self.report_of({"data": [{"functions": found}]}, listed)

    def test_all_that_is_reached_passes(self):
        self.assertEqual(self.report(function((3, 4), (1, 3), (1, 2))),
                         (0, ["| `room/` | 4 | 100.0 % | 6 | 100.0 % |"], "", []))

    def test_a_branch_that_is_missing_fails(self):
        status, rows, messages, missing = self.report(function((3, 4), (1, 3), (0, 3)))
        self.assertEqual((status, rows), (1, ["| `room/` | 4 | 100.0 % | 6 | 83.3 % |"]))
        self.assertEqual(messages, "room/: 83.33 % of the branches are taken; expected at least 97 %\n")
        self.assertEqual(missing, ["room/a.cpp:5: never a != a is true"])

    def test_a_line_that_is_missing_fails(self):
        status, rows, messages, missing = self.report(function((0, 7), (1, 3), (1, 2), left=7))
        self.assertEqual((status, rows), (1, ["| `room/` | 4 | 75.0 % | 6 | 83.3 % |"]))
        self.assertIn("room/: 75.00 % of the lines are reached; expected at least 99 %\n", messages)
        self.assertEqual(missing, ["room/a.cpp:2: never a < 0 is true", "room/a.cpp:3: never reached"])

    def test_limits_are_as_promised(self):
        for lines, branch_ways, status in ((99, 97, 0), (98, 97, 1), (99, 96, 1)):
            one = coverage_report.Counts()
            one.lines = {k: k < lines for k in range(100)}
            one.branches = {k: k < branch_ways for k in range(100)}
            with contextlib.redirect_stdout(io.StringIO()):
                self.assertEqual(len(coverage_report.report({"room": one})), status)

    def test_any_instantiation_takes_a_branch(self):
        first, second = function((3, 0), (1, 0), (0, 0), left=0), function((0, 4), (0, 3), (1, 2))
        self.assertEqual(self.report(first, second)[0], 0)
        self.assertEqual(self.report(second)[0], 1)

    def test_constants_do_not_count(self):
        status, rows, _, missing = self.report(function((3, 4), (1, 3), (0, 0)))
        self.assertEqual((status, rows, missing), (0, ["| `room/` | 4 | 100.0 % | 4 | 100.0 % |"], []))

    def test_functions_that_only_the_compiler_runs_do_not_count(self):
        called, not_called = function((3, 4), (1, 3), (1, 2)), function((0, 0), (0, 0), (0, 0), entered=0, left=0)
        for declared, lines in ((SOURCE.replace("int Sign", "constexpr int Sign"), 0), (SOURCE, 4)):
            self.write("room/a.cpp", declared.replace("constexpr int Sign(int", "constexpr int\nSign(int"))
            moved = json.loads(json.dumps(not_called))
            if not lines:
                for place in moved["regions"] + moved["branches"]:
                    place[0], place[2] = place[0] + 1, place[2] + 1
            self.assertEqual(len(self.report(moved)[3]), 10 if lines else 0)
        self.assertEqual(self.report(not_called, called)[0], 0)

    def test_the_way_past_every_case_does_not_count(self):
        self.write("room/a.cpp", "int F(E e) {\n  switch (e) {\n  case A:\n    return 1;\n  }\n}\n")
        one = {"filenames": ["room/a.cpp"], "regions": [[1, 12, 6, 2, 3, 0, 0, 0], [2, 14, 5, 4, 0, 0, 0, 3],
                                                        [3, 3, 4, 13, 3, 0, 0, 0]],
               "branches": [[2, 11, 2, 12, 0, 3, 0, 0, 4], [3, 3, 3, 9, 3, 0, 0, 0, 4]]}
        self.assertEqual(self.report(one)[3], ["room/a.cpp:3: never case A is false"])

    def test_a_lambda_that_is_not_called_is_missing(self):
        self.write("room/a.cpp", "void F() {\n  G([] {\n    H();\n  });\n}\n")
        outer = {"filenames": ["room/a.cpp"], "regions": [[1, 10, 5, 2, 1, 0, 0, 0]], "branches": []}
        for called, missing in ((1, []), (0, ["room/a.cpp:3: never reached"])):
            inner = dict(outer, regions=[[2, 8, 4, 4, called, 0, 0, 0]])
            for order in ([outer, inner], [inner, outer]):
                self.assertEqual(self.report(*order)[3], missing)

    def test_what_is_listed_counts_as_reached(self):
        self.assertEqual(self.report(function((3, 4), (1, 3), (0, 3)), listed=ENTRY),
                         (0, ["| `room/` | 4 | 100.0 % | 6 | 100.0 % |"], "", []))

    def test_an_entry_of_what_is_reached_fails(self):
        status, _, messages, _ = self.report(function((3, 4), (1, 3), (1, 3)), listed=ENTRY)
        self.assertEqual(status, 1)
        self.assertIn("listed, but reached or no longer there:\n  room/a.cpp: return a > 0 || a != a;", messages)

    def test_an_entry_of_a_line_that_is_gone_fails(self):
        status, _, messages, missing = self.report(function((3, 4), (1, 3), (0, 3)), listed=ENTRY.replace("a > 0", "a > 1"))
        self.assertEqual(status, 1)
        self.assertIn("no longer there:\n  room/a.cpp: return a > 1 || a != a;", messages)
        self.assertEqual(missing, ["room/a.cpp:5: never a != a is true"])

    def test_an_entry_without_a_reason_fails(self):
        for broken in (ENTRY.replace("why: a whole number equals itself\n", ""), ENTRY.replace("room/a.cpp", "")):
            status, _, messages, _ = self.report(function((3, 4), (1, 3), (0, 3)), listed=broken)
            self.assertEqual(status, 1)
            self.assertIn("an entry has the lines file, line, never, why, each with a text", messages)

    def test_a_room_without_counts_fails(self):
        status, _, messages, _ = self.report_of({"data": [{"functions": []}]})
        self.assertEqual((status, messages), (1, "no line of room/ was counted\n"))

    def test_the_list_of_the_tree_is_well_formed(self):
        path = pathlib.Path(coverage_report.__file__).parent / "unreached.txt"
        for file, line, never in coverage_report.read_unreached(path):
            lines = [one.strip() for one in (path.parents[1] / file).read_text().split("\n")]
            self.assertIn(line, lines, file)

    @unittest.skipUnless(shutil.which("clang++") and shutil.which("llvm-cov"),
                         "clang counts; the group check of scripts/packages.sh has it")
    def test_clang_counts_a_program(self):
        self.write("room/t.h", "template <class T, bool Is>\nbool Over(T a) {\n  if constexpr (Is)\n    return a > 1;\n"
                               "  return a > 2;\n}\n")
        source = self.write("main.cpp", '#include "room/a.cpp"\n#include "room/t.h"\n#include <cstdlib>\nint main() {\n'
                            "  Sign(-1);\n  Sign(0);\n  Over<int, true>(2);\n  Over<long, false>(2);\n  _Exit(Sign(1) - 1);\n}\n")
        program, profile = self.root / "program", self.root / "p.profdata"
        subprocess.run(["clang++", "-fprofile-instr-generate", "-fcoverage-mapping", "-mllvm",
                        "-runtime-counter-relocation", source, "-o", program], check=True)
        # The program ends without its exit handlers.
        subprocess.run([program], check=True, env={"LLVM_PROFILE_FILE": f"{self.root}/%m%c.profraw"})
        subprocess.run(["llvm-profdata", "merge", "--sparse", *self.root.glob("*.profraw"), "-o", profile], check=True)
        exported = subprocess.run(["llvm-cov", "export", f"--instr-profile={profile}", program],
                                  check=True, stdout=subprocess.PIPE).stdout
        status, rows, _, missing = self.report_of(json.loads(exported), ENTRY)
        self.assertEqual((status, rows), (0, ["| `room/` | 8 | 100.0 % | 6 | 100.0 % |"]))
        self.assertEqual(missing, [])


if __name__ == "__main__":
    unittest.main()
