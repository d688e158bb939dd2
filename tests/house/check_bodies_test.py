"""Makes bodies too long in every form that a body has: scripts/check_bodies.py must name them."""

import pathlib
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "scripts"))
import check_bodies

LIMIT = check_bodies.LONGEST


def lines(count):
    return "  Step();\n" * count


class CheckBodies(unittest.TestCase):
    def lengths(self, text):
        found, sound = check_bodies.bodies_of(text)
        self.assertTrue(sound)
        return [(name, length) for name, _, length in found]

    def check(self, files, exceptions=frozenset()):
        with tempfile.TemporaryDirectory() as folder:
            for name, text in files.items():
                path = pathlib.Path(folder) / name
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_text(text)
            return check_bodies.check(folder, set(exceptions))

    def test_the_limit_itself_passes_and_one_line_more_is_named(self):
        self.assertEqual(self.check({"gsl/a.cpp": f"void F() {{\n{lines(LIMIT)}}}\n"}), ([], 1))
        problems, _ = self.check({"gsl/a.cpp": f"\n\nvoid F() {{\n{lines(LIMIT + 1)}}}\n"})
        self.assertEqual(problems, ["gsl/a.cpp:3: the body of F has 61 lines, but at most 60 are allowed"])

    def test_every_folder_is_read(self):
        body = f"void F() {{\n{lines(LIMIT + 1)}}}\n"
        for folder in check_bodies.FOLDERS:
            self.assertEqual(len(self.check({f"{folder}/deep/a.h": body})[0]), 1, folder)

    def test_an_exception_is_needed_and_names_its_function(self):
        body = f"void F() {{\n{lines(LIMIT + 1)}}}\n"
        self.assertEqual(self.check({"gsl/a.cpp": body}, {("gsl/a.cpp", "F")})[0], [])
        self.assertEqual(len(self.check({"gsl/a.cpp": body}, {("gsl/a.cpp", "G")})[0]), 2)
        self.assertEqual(self.check({"gsl/a.cpp": "void F() {}\n"}, {("gsl/a.cpp", "F")})[0],
                         ["gsl/a.cpp: F no longer needs an exception"])

    def test_functions_of_every_form_are_bodies(self):
        for head, name in [("int F(int a, int b)", "F"),
                           ("bool Thing::IsOn(const P& p) const noexcept", "Thing::IsOn"),
                           ("auto F(int a = 3) -> std::vector<int>", "F"),
                           ("template <class T = int> void F(T t = {})", "F"),
                           ("bool operator==(const T& a, const T& b)", "operator=="),
                           ("Thing& Thing::operator=(const Thing& o)", "operator="),
                           ("bool T::operator()(int a) const", "operator()"),
                           ("Thing::Thing(int a) : x(a), y{a, {1, 2}}, z(a)", "Thing::Thing"),
                           ("Thing::Thing(int a) : Base<int>{a}", "Thing::Thing"),
                           ("Thing::~Thing()", "Thing::~Thing"),
                           ("class Thing* F(struct Other* o)", "F"),
                           ("const auto f = [a](int b)", "a lambda"),
                           ("const auto f = []", "a lambda")]:
            bodies = self.lengths(f"{head} {{\n{lines(3)}}};\n")
            self.assertEqual([length for _, length in bodies], [3], head)
            found = bodies[0][0]
            if name != "a lambda":
                self.assertTrue(found.endswith(name), f"{head}: {found}")

    def test_members_of_classes_and_namespaces_are_measured_alone(self):
        text = ("namespace a::b {\nnamespace {\nclass GSL_API T final : public B<int> {\npublic:\n"
                f"  T() : x(1) {{\n{lines(2)}  }}\n  void G() {{\n{lines(4)}  }}\nprivate:\n  int x{{3}};\n}};\n"
                "enum class E : int { A, B };\n} // namespace\n}\n" 'extern "C" {\nvoid H() {\n}\n}\n')
        self.assertEqual(self.lengths(text), [("T", 2), ("G", 4), ("H", 0)])

    def test_initialisers_are_not_bodies(self):
        many = "  {1, 2},\n" * 99
        for text in (f"constexpr int kA[][2] = {{\n{many}}};\n", f"constexpr int kA[][2]{{\n{many}}};\n",
                     f"const T kT = Make(1, {{\n{many}}});\n", "struct T {\n" + "  int x;\n" * 99 + "};\n"):
            self.assertEqual(self.lengths(text), [])

    def test_braces_in_comments_and_text_do_not_count(self):
        for line in ("// {", "/* { \n { */", 'f("{");', "f('{');", 'f("\\"{");', 'f(R"x({ " {)x");', "f('\\'', '{');",
                     "n = 1'000'000; // {", 'f(R"(\\)", "{");'):
            ((_, length),) = self.lengths(f"void F() {{\n{line}\n}}\n")
            self.assertEqual(length, 1 + line.count("\n"), line)

    def test_an_inner_block_belongs_to_its_function(self):
        text = "void F() {\n  if (a) {\n    b();\n  } else {\n    c();\n  }\n  auto g = [] { return T{1}; };\n}\nint G() { return 1; }\n"
        self.assertEqual(self.lengths(text), [("F", 6), ("G", 0)])

    def test_each_branch_of_an_if_is_read_alone(self):
        text = "#if A\nvoid F() {\n#else\nvoid F(int) {\n#endif\n  Step();\n}\n#define OPEN {\n"
        self.assertEqual([length for _, length in self.lengths(text)], [2])

    def test_braces_without_a_partner_are_refused(self):
        for text in ("void F() {\n", "void F() {}\n}\n"):
            self.assertEqual(self.check({"gsl/a.cpp": text})[0], ["gsl/a.cpp: the braces do not match"])


if __name__ == "__main__":
    unittest.main()
