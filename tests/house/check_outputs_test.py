"""Adds and removes declarations and comments: scripts/check_outputs.py must name the missing ones."""

import pathlib
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "scripts"))
import check_outputs

HEADER = """
class GSL_API gsl_Thing {
public:
  gsl_Thing(const gsl_Thing&);
  gsl_Thing(gsl_Thing&& other) noexcept;
  bool Find(const gsl_Point& from, unsigned int n, gsl_Point& out,
            double* const weights) const; // writes gsl_Point& out
  double Area(gsl_Thing const* other) const { return Of(a * b); }
  void Print(aio_ostream& out, int indent) const;
  void Fill(double (*const out)[4]) const;

private:
  double Hidden(gsl_Point& out) const;
};

GSL_API void gsl_Free(const bool* flags, int& count);
"""
NAMES = """
// output: gsl_Thing::Find(gsl_Point, unsigned, gsl_Point&,
// double*)
TEST(Aliasing, Find) {}
// output: gsl_Thing::Fill(double*)
// output: gsl_Free(bool, int&)
"""


class CheckOutputs(unittest.TestCase):
    def problems_with(self, header=HEADER, names=NAMES):
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder)
            for name, text in ((check_outputs.HEADERS + "/gsl_Thing.h", header), (check_outputs.TEST, names)):
                (root / name).parent.mkdir(parents=True, exist_ok=True)
                (root / name).write_text(text)
            return check_outputs.check(root)

    def test_what_is_named_passes(self):
        self.assertEqual(self.problems_with(), ([], 3))

    def test_an_operation_without_a_comment_is_named(self):
        problems, _ = self.problems_with(names=NAMES.replace("// output: gsl_Free(bool, int&)", ""))
        self.assertEqual(len(problems), 1)
        self.assertIn("does not name gsl_Free(bool, int&)", problems[0])

    def test_another_output_makes_another_operation(self):
        problems, _ = self.problems_with(header=HEADER.replace("const gsl_Point& from", "gsl_Point& from"))
        self.assertEqual(len(problems), 2)

    def test_a_name_without_a_declaration_is_named(self):
        problems, _ = self.problems_with(names=NAMES + "// output: gsl_Thing::Gone(int&)\n")
        self.assertEqual(problems, [f"{check_outputs.TEST}: no header declares gsl_Thing::Gone(int&)"])

    def test_operations_that_become_public_count(self):
        self.assertEqual(self.problems_with(header=HEADER.replace("private:", ""))[1], 4)


if __name__ == "__main__":
    unittest.main()
