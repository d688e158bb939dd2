"""Removes the mark from declarations of every form: scripts/check_nodiscard.py must name them."""

import pathlib
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "scripts"))
import check_nodiscard

HEADER = """
class GSL_API gsl_Thing {
public:
  [[nodiscard]] bool IsOn(const gsl_Point& p) const;
  [[nodiscard]] virtual gsl_Thing* Copy() const;
  [[nodiscard]] bool operator==(const gsl_Thing& o) const;
  [[nodiscard]] friend bool operator<(const gsl_Thing& a, const gsl_Thing& b) { return a.n < b.n; }
  [[nodiscard]] static std::unique_ptr<int>* Make(int n) {
    return new std::unique_ptr<int>(n);
  }
  friend bool operator!=(const gsl_Thing& a, const gsl_Thing& b);
  bool Normalize(); // bool IsOn(int)
  const char* Name() const;
  double Length() const;

private:
  bool flag;
};
[[nodiscard]] GSL_API bool gsl_IsThing(const gsl_Thing* thing);
"""


class CheckNodiscard(unittest.TestCase):
    def test_marked_declarations_pass(self):
        self.assertEqual(check_nodiscard.unmarked(HEADER), ([], 6))

    def test_every_mark_taken_away_is_noticed(self):
        mark = "[[nodiscard]] "
        for i, name in enumerate(["IsOn", "Copy", "operator==", "operator<", "Make", "gsl_IsThing"]):
            pieces = HEADER.split(mark)
            without = mark.join(pieces[: i + 1]) + mark.join(["", *pieces[i + 1 :]])[len(mark) :]
            self.assertEqual(without.count(mark), HEADER.count(mark) - 1)
            self.assertEqual(check_nodiscard.unmarked(without), ([name], 6))


if __name__ == "__main__":
    unittest.main()
