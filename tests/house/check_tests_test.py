"""Removes each test in turn: scripts/check_tests.py must name the untested sources."""

import pathlib
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "scripts"))
import check_tests

TREE = {
    "exact/Ratio.h": "int Compare(int a, int b);\n",
    "exact/Ratio.cpp": "int Compare(int a, int b) { return a - b; }\n",
    "exact/Sum.h": "inline int Sum(int a, int b) {\n  return a + b;\n}\n",
    "exact/Names.h": "// f() {\nstruct Names { int first; };\nint Count(const Names&);\n",
    "mesh/readers/Stl.cpp": "",
    "gsl/host/cow/standin/cow_String.cpp": "",
    "gsl/include/gsl_Near.h": "inline int Near() { return 1; }\n",
    "tests/exact/CMakeLists.txt": "add(Ratio_test.cpp\n  Sum_test.cpp)\n",
    "tests/exact/Ratio_test.cpp": "",
    "tests/exact/Sum_test.cpp": "",
    "tests/mesh/CMakeLists.txt": "add(readers/Stl_test.cpp)\n",
    "tests/mesh/readers/Stl_test.cpp": "",
    "tests/gsl/host/CMakeLists.txt": "add(cow/cow_String_test.cpp)\n",
    "tests/gsl/host/cow/cow_String_test.cpp": "",
}


class CheckTests(unittest.TestCase):
    def problems_with(self, changes, exceptions=()):
        with tempfile.TemporaryDirectory() as folder:
            for name, text in {**TREE, **changes}.items():
                path = pathlib.Path(folder) / name
                if text is None:
                    continue
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_text(text)
            return check_tests.check(folder, {name: "why" for name in exceptions})[0]

    def test_a_mirrored_tree_passes(self):
        self.assertEqual(self.problems_with({}), [])

    def test_each_source_needs_its_test(self):
        for source, test in (
            ("exact/Ratio.cpp", "tests/exact/Ratio_test.cpp"),
            ("exact/Sum.h", "tests/exact/Sum_test.cpp"),
            ("mesh/readers/Stl.cpp", "tests/mesh/readers/Stl_test.cpp"),
            ("gsl/host/cow/standin/cow_String.cpp", "tests/gsl/host/cow/cow_String_test.cpp"),
        ):
            self.assertEqual(self.problems_with({test: None}), [f"{source}: has no test file {test}"])

    def test_a_test_that_is_not_compiled_is_named(self):
        problems = self.problems_with({"tests/exact/CMakeLists.txt": "add(Ratio_test.cpp)\n"})
        self.assertEqual(problems, ["tests/exact/Sum_test.cpp: is missing in the CMakeLists.txt of the tests"])

    def test_a_test_of_the_same_name_elsewhere_does_not_count(self):
        problems = self.problems_with({"tests/exact/Sum_test.cpp": None, "tests/mesh/Sum_test.cpp": ""})
        self.assertEqual(problems, ["exact/Sum.h: has no test file tests/exact/Sum_test.cpp"])

    def test_bodies_of_every_shape_are_seen(self):
        for text in (
            "struct A { int Get() const { return 1; } };\n",
            "struct A { explicit A(int k) : m_k(k) {} int m_k; };\n",
            "struct A { A(int k) : m_k{k}, m_l(k) {} int m_k, m_l; };\n",
            "template <class T>\nT Twice(T t)\n{\n  return t + t;\n}\n",
        ):
            self.assertEqual(len(self.problems_with({"exact/New.h": text})), 1, text)

    def test_declarations_and_data_are_not_bodies(self):
        text = "/* f() { */\nconstexpr int kMost = 3;\nenum class E { A, B };\nint F(int a = (1));\nstruct S { int a = {}; };\n"
        self.assertEqual(self.problems_with({"exact/New.h": text}), [])

    def test_an_exception_is_needed_and_names_a_file(self):
        self.assertEqual(self.problems_with({"tests/exact/Sum_test.cpp": None}, ["exact/Sum.h"]), [])
        self.assertEqual(self.problems_with({"tests/exact/Sum_test.cpp": None}, ["exact/S*.h"]), [])
        self.assertIn("no longer an exception", self.problems_with({}, ["exact/Sum.h"])[0])
        self.assertIn("no source is called that", self.problems_with({}, ["exact/Gone.h"])[0])


if __name__ == "__main__":
    unittest.main()
