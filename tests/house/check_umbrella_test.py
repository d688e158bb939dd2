"""Removes each include in turn: scripts/check_umbrella.py must name the functions that are out of reach."""

import pathlib
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "scripts"))
import check_umbrella

TREE = {
    "gsl_utils.h": '#include "gsl_Near.h"\n#include <cmath>\nGSL_API bool gsl_RealEqual(double a, double b);\n',
    "gsl_Near.h": '#include "gsl_Far.h"\nclass GSL_API gsl_Near {\n  void Member(int);\n};\n',
    "gsl_Far.h": "GSL_API omu_Primitive*\nomu_ReturnPrim(const gsl_Near& near);\n",
}


class CheckUmbrella(unittest.TestCase):
    def problems_with(self, changes):
        with tempfile.TemporaryDirectory() as folder:
            include = pathlib.Path(folder) / "gsl/include"
            include.mkdir(parents=True)
            for name, text in {**TREE, **changes}.items():
                (include / name).write_text(text)
            return check_umbrella.check(folder)

    def test_functions_within_reach_pass(self):
        self.assertEqual(self.problems_with({}), ([], 2))

    def test_a_function_out_of_reach_is_named(self):
        problems, _ = self.problems_with({"gsl_Near.h": "class GSL_API gsl_Near;\n"})
        self.assertEqual(problems, ["gsl_Far.h: declares omu_ReturnPrim, but gsl_utils.h does not include it"])

    def test_headers_that_include_each_other_end(self):
        self.assertEqual(self.problems_with({"gsl_Far.h": '#include "gsl_Near.h"\n'}), ([], 1))

    def test_classes_need_not_be_within_reach(self):
        self.assertEqual(self.problems_with({"gsl_Other.h": "class GSL_API gsl_Other {\n  gsl_Other(int);\n};\n"}),
                         ([], 2))


if __name__ == "__main__":
    unittest.main()
