"""Plants each contradiction to the list of what a host supplies: scripts/check_host_view.py must name it."""

import pathlib
import shutil
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "scripts"))
import check_host_view
from check_host_view import Declared, rows_of, split_name, symbol_problem

PARTS = ("gsl", "tests/external_host", "tests/host_conformance")


class Names(unittest.TestCase):
    def test_listed_names_are_split(self):
        for name, parts in (("cls_Uid()", (None, "cls_Uid")), ("cow_String::CStr()", ("cow_String", "CStr")),
                            ("cow_Map<K, V>::Insert(const K& key)", ("cow_Map", "Insert")),
                            ("cow_COW<T, Cloner>()", (None, "cow_COW")),
                            ("operator<<(aio_ostream& out, char c)", (None, "operator<<")),
                            ("cow_COW<T, Cloner>::operator->()", ("cow_COW", "operator->")),
                            ("cls_xp2DArrayDouble::operator()(std::size_t row)", ("cls_xp2DArrayDouble", "operator()")),
                            ("cow_1DArray<T>::operator[](std::size_t i)", ("cow_1DArray", "operator[]"))):
            self.assertEqual(split_name(name), parts)

    def test_a_header_is_read(self):
        declared = Declared("""
            #define SOME_MACRO(x) \\
              int x()
            namespace inner { int Free(double value); }
            enum cls_Kind { cls_First = 2, cls_Second };
            struct Entry { int number; const char* text; };
            template <class T, class = void>
            class XH_API cls_Thing : public Base<T> {
              int m_hidden;
            public:
              explicit cls_Thing(int count) : m_hidden{count}, m_other(count) { Called(count); }
              ~cls_Thing() override;
              using Alias = void (*)(int);
              [[nodiscard]] virtual bool Is() const { return m_hidden == Other(); }
              friend bool operator==(const cls_Thing& a, const cls_Thing& b);
              T& operator()(int i);
              static constexpr int kMost = 3;
            protected:
              void Step();
            private:
              void Secret();
              static __thread int block __attribute__((tls_model("initial-exec")));
            };""")
        self.assertEqual(declared.public, {"inner", "Free", "cls_Kind", "cls_First", "cls_Second", "Entry", "number",
                                           "text", "cls_Thing", "Alias", "Is", "operator==", "operator()", "kMost",
                                           "Step"})
        self.assertEqual(declared.private, {"m_hidden", "Secret", "block"})
        self.assertEqual(declared.virtual, {"Is"})

    def test_a_symbol_is_listed_or_private(self):
        listed, hidden = {"cow_String", "CStr", "operator<<", "cls_ListReader", "ReadObject"}, {"Release"}
        for name in ("cow_String::CStr() const", "cow_String::~cow_String()", "vtable for cow_String",
                     "cow_String::Release(cow_String::Shared*)", "gsl_Vector::Normalize()", "xh_Registry::Find(char const*)",
                     "operator<<(std::ostream&, aio_FormattedDouble const&)", "operator new(unsigned long)"):
            self.assertIsNone(symbol_problem(name, listed, hidden), name)
        for name in ("cow_String::Upper() const", "vtable for cow_Text", "mem_Malloc(unsigned long)",
                     "operator==(cow_String const&, cow_String const&)"):
            self.assertIn("does not list", symbol_problem(name, listed, hidden))


class Tree(unittest.TestCase):
    def problems_with(self, path, before, after):
        """The problems of a copy of the tree, in one file of which a text is replaced."""
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder)
            for part in PARTS:
                shutil.copytree(ROOT / part, root / part)
            (root / "docs").mkdir()
            shutil.copy(ROOT / "docs/host.md", root / "docs")
            file = root / path
            self.assertIn(before, file.read_text())
            file.write_text(file.read_text().replace(before, after, 1))
            return check_host_view.check(root)[0]

    def refuses(self, path, before, after, reason):
        problems = self.problems_with(path, before, after)
        self.assertTrue(any(reason in problem for problem in problems), problems)

    def test_the_tree_passes(self):
        problems, count = check_host_view.check(ROOT)
        self.assertEqual(problems, [])
        self.assertGreaterEqual(count, 150)

    def test_a_stale_document_is_refused(self):
        self.refuses("docs/host.md", "Returns the number of bytes.", "Returns the number of words.", "docs/host.md: the list")

    def test_a_name_that_is_not_listed_is_refused(self):
        self.refuses("gsl/persist/gsl_Arrays.cpp", "template class cow_1DArray<gsl_Point>;",
                     "template class cow_2DArray<gsl_Point>;", "uses cow_2DArray")

    def test_a_member_that_is_not_listed_is_refused(self):
        self.refuses("gsl/persist/gsl_FieldKinds.h", "holder.IsEmpty()", "holder.Owners() == 0", "uses Owners")

    def test_a_header_that_is_not_listed_is_refused(self):
        self.refuses("gsl/impl/gsl_utils.cpp", '#include "gsl_utils.h"', '#include "mem_Export.h"', "includes mem_Export.h")

    def test_what_the_second_host_declares_is_listed(self):
        self.refuses("tests/external_host/include/cow_String.h", "std::size_t Length() const noexcept;",
                     "std::size_t Length() const noexcept;\n  bool IsEmpty() const;", "declares IsEmpty")

    def test_what_is_listed_is_declared_by_both_hosts(self):
        self.refuses("tests/external_host/include/cls_Uid.h", "AllocateUid", "xh_NewUid", "the second host does not declare")
        self.refuses("gsl/host/typ/typ_DebugFlags.h", "GetDebugFlags", "Level", "the stand-in does not declare")

    def test_a_case_must_exist_and_run(self):
        self.refuses("gsl/host/supplies.txt", "| uid_null uid_unique", "| uid_zero", "names the case uid_zero")
        self.refuses("tests/host_conformance/CMakeLists.txt", "uid_unique ", "", "does not run the case uid_unique")

    def test_a_header_that_may_be_left_out_is_left_out_by_the_second_host(self):
        self.refuses("gsl/host/supplies.txt", "[cls_ListReader.h]", "[cls_ListReader.h] optional", "must do without")
        self.refuses("gsl/host/supplies.txt", "[cls_ReadRun.h] optional", "[cls_ReadRun.h]", "a host has no header")

    def test_rows_have_a_header(self):
        rows = rows_of("# a comment\n[cow_String.h]\ncow_String() | Makes it. | string\n")
        self.assertEqual([(row.header, row.last, row.cases) for row in rows], [("cow_String.h", "cow_String", "string")])
        self.assertFalse(rows[0].is_optional)
        self.assertTrue(rows_of("[cow_String.h] optional\ncow_String() | Makes it. | string\n")[0].is_optional)


if __name__ == "__main__":
    unittest.main()
