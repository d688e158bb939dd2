"""Gives small headers to docs/reference/filter.py, and compares what Doxygen would read; compares the front page of the
reference with the headers."""

import pathlib
import re
import sys
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "docs/reference"))
import filter as reference

HEAD = "#ifndef A_H\n#define A_H\n\n"
READ = "#ifndef A_H\n#define A_H\n/** @file */\n"


class Filter(unittest.TestCase):
    def check(self, header, expected):
        self.assertEqual(reference.filtered(HEAD + header), READ + expected)

    def test_facts_become_a_list(self):
        self.check("/// A box.\n///\n/// Units      model units, of\n///            any kind.\n"
                   "/// Degenerate none.\n/// Then it ends.\nclass A {\n",
                   "/// A box.\n///\n/// <dl><dt>Units</dt><dd>model units, of\n/// any kind.\n"
                   "/// <dt>Degenerate</dt><dd>none.</dl>\n/// Then it ends.\nclass A {\n")

    def test_a_conventional_member_gets_its_text_only_without_a_comment(self):
        self.check("  const cls_Uid& Uid() const { return m_uid; }\n",
                   "  /** Returns the identity. */ const cls_Uid& Uid() const { return m_uid; }\n")
        for header in ("  /// Ours.\n  const cls_Uid& Uid() const { return m_uid; }\n", "  int Other(int n);\n",
                       "  int\n  operator==(int);\n"):
            self.check(header, header)

    def test_trivial_accessors_are_named_after_themselves(self):
        self.check("  int OwnerFeatID() const { return m_id; }\n",
                   "  /** Returns the owner feat ID. */ int OwnerFeatID() const { return m_id; }\n")
        self.check("  int Size() const { return m_a + m_b; }\n", "  int Size() const { return m_a + m_b; }\n")

    def test_several_variables_share_the_comment(self):
        self.check("  int a = 0, b = 1; ///< of each\n", "  /** of each */ int a = 0; /** of each */ int b = 1;\n")
        self.check("  int F(int a, int b); ///< x\n", "  int F(int a, int b); ///< x\n")

    def test_private_classes_and_friends_are_left_out_and_the_next_public_part_is_not(self):
        self.check("class A {\nprivate:\n  friend class B;\n  struct C {\n    int c;\n  };\n  int a;\n"
                   "public:\n  struct D {\n    int d;\n  };\n};\n",
                   "class A {\nprivate:\n\n\n\n\n  int a;\npublic:\n  struct D {\n    int d;\n  };\n};\n")

    def test_friends_that_are_operators_become_members(self):
        self.check("  friend bool operator<(A a, A b);\n",
                   "  /** Returns whether the two are in the order of the operator. */ bool operator<(A a, A b);\n")

    def test_what_is_added_to_std_and_marks_of_exports_are_left_out(self):
        self.check("template <>\nstruct std::hash<A> {\n  int a;\n};\nint b;\n", "\n\n\n\nint b;\n")
        self.check("#if defined(__GNUC__)\n#define GSL_X_API y\n#else\n#define GSL_X_API\n#endif\nint b;\n",
                   "\n\n\n\n\nint b;\n")

    def test_no_line_of_a_public_header_moves_and_no_declaration_changes(self):
        headers = [path for folder in ("gsl/include", "sweep/include", "records/include", "model/include")
                   for path in (ROOT / folder).glob("*.h")]
        self.assertGreater(len(headers), 30)
        for path in headers:
            text = path.read_text()
            self.assertEqual(reference.filtered(text).count("\n"), text.count("\n"), path.name)


class FrontPage(unittest.TestCase):
    page = (ROOT / "docs/reference/front.md").read_text()
    headers = "".join(path.read_text() for folder in ("gsl/include", "sweep/include", "records/include", "model/include",
                                                      "gsl/host") for path in sorted((ROOT / folder).rglob("*.h")))

    def test_it_names_only_what_headers_declare(self):
        names = set(re.findall(r"\b(?:gsl|cls|omu|nex)_\w+|(?<=::)[A-Z]\w+", self.page)) - {"gsl_", "gsl_geometry"}
        self.assertGreater(len(names), 40)
        for name in names:
            self.assertRegex(self.headers, rf"\b(class|struct|enum|enum class|namespace)( \w+_API)? {name}\b|\b{name}\(")

    def test_it_names_every_class_of_the_library(self):
        for path in (ROOT / "gsl/include").glob("gsl_*.h"):
            for name in re.findall(r"^class GSL_API (gsl_\w+) ?(?:final )?[:{]", path.read_text(), re.MULTILINE):
                self.assertIn(name, self.page, path.name)


if __name__ == "__main__":
    unittest.main()
