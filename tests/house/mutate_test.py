"""Mutants of a small project whose tests are known: scripts/mutate must find each, and say what became of it."""

import dataclasses
import pathlib
import shutil
import sys
import tempfile
import unittest
from unittest import mock

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "scripts" / "mutants"))
import main
import places
import schemata
import tests
import tree

CMAKE = """cmake_minimum_required(VERSION 3.25)
project(sample LANGUAGES CXX)
set(CMAKE_CXX_STANDARD 17)
add_executable(sample_tests src/sample.cpp test.cpp)
add_executable(other_tests other.cpp)
enable_testing()
foreach(name plus below absolute count last)
  add_test(NAME ${name} COMMAND sample_tests ${name})
endforeach()
"""
HEADER = """namespace gsl_sample {
int Plus(int a, int b);
bool Below(int a, int b);
int Absolute(int a);
int Unused(int a);
unsigned Count(unsigned n);
int Last(const int* values, int count);
}
"""
SOURCE = """#include "sample.h"
namespace gsl_sample {
constexpr int kOne = 3 - 2;
template <int N>
constexpr int Twice() { return N * 2; }
static_assert(Twice<kOne + 1>() == 4);
// The sum.
int Plus(int a, int b) {
  return a + b;
}
bool Below(int a, int b) {
  return a < b;
}
int Absolute(int a) {
  return a < 0 ? -a : a;
}
int Unused(int a) {
  return a * a;
}
unsigned Count(unsigned n) {
  unsigned k = n - n;
  while (k != n)
    ++k;
  return k;
}
int Last(const int* values, int count) {
  if (count > 0) return values[count - 1];
  __builtin_trap();
}
}
"""
TEST = """#include "src/sample.h"
#include <cstring>
using namespace gsl_sample;
int main(int, char** arguments) {
  const char* const name = arguments[1];
  const int values[2] = {5, 7};
  bool good = true;
  if (std::strcmp(name, "plus") == 0) good = Plus(2, 3) == 5;
  if (std::strcmp(name, "below") == 0) good = Below(2, 3) && !Below(3, 2);
  if (std::strcmp(name, "absolute") == 0) good = Absolute(-2) == 2 && Absolute(0) == 0 && Absolute(3) == 3;
  if (std::strcmp(name, "count") == 0) good = Count(3) == 3;
  if (std::strcmp(name, "last") == 0) good = Last(values, 2) == 7;
  return good ? 0 : 1;
}
"""
EQUIVALENT = """# Why some mutants cannot be noticed.

file: src/sample.cpp
function: Absolute
was: return a < 0 ? -a : a;
now: return a <= 0 ? -a : a;
why: -0 is 0

file: src/sample.cpp
function: Gone
was: return 1;
now: return 0;
why: it was there once
"""


def found_in(text):
    """Returns the places of a text, and the counts of what is skipped."""
    with tempfile.TemporaryDirectory() as folder:
        path = pathlib.Path(folder) / "a.cpp"
        path.write_text(text)
        return places.find(path, ["-std=c++17"])


def texts(body, before=""):
    """Returns what may be written in a function with this body."""
    found = found_in(f"{before}\nint gsl_F(int a, int b, double x, int* p, bool c) {{ {body} }}\n")
    return sorted(place.text for place in found.places)


@unittest.skipUnless(shutil.which("clang++"), "clang finds the places; the group check of scripts/packages.sh has it")
class Places(unittest.TestCase):
    def test_each_operator_has_its_mutants(self):
        for body, expected in [
                ("return a < b;", ["a <= b", "a >= b"]), ("return a == b;", ["a != b"]),
                ("return a % b;", ["a * b"]), ("return a << b;", ["a >> b"]),
                ("return c && a > b;", ["(a > b)", "a <= b", "a >= b", "c", "c || (a > b)"]),
                ("return (a - b) * a;", ["(a - b) / a", "a + b"]),
                ("return a & b;", ["a | b"]), ("return -a;", ["a"]), ("return !c;", ["c"])]:
            self.assertEqual(texts(body), sorted(expected), body)

    def test_a_constant_becomes_another_of_its_kind(self):
        for body, expected in [
                ("return 0;", ["1"]), ("return 1;", ["0"]), ("return 0x10;", ["17"]), ("return 010;", ["9"]),
                ("return 1'000'000;", ["1000001"]), ("return 7ULL;", ["8ULL"]), ("return 0.0;", ["1.0"]),
                ("return 4.0F;", ["4.0F / 2"]), ("return true;", ["false"]), ("return 'a';", [])]:
            self.assertEqual(texts(body), expected, body)

    def test_statements_are_removed(self):
        self.assertEqual(texts("a = b; return 'a';"), [""])
        self.assertEqual(texts("++a; return 'a';"), ["", "--a"])
        self.assertEqual(texts("while (c) { break; } return 'a';"), ["", "!(c)"])
        self.assertEqual(texts("if (c) throw a; return 'a';"), ["", "!(c)"])
        self.assertEqual(texts("throw a;"), [])

    def test_an_index_stays_inside(self):
        self.assertEqual(texts("int q[3] = {}; return q[2] + q[a];"),
                         ["0", "gsl_mutants::Next(a, 3)", "q[2] - q[a]"])
        self.assertEqual(texts("return p[a];"), ["(p[a]) + 1", "gsl_mutants::Previous(a)"])
        self.assertEqual(texts("return p[2];"), ["(p[2]) + 1", "1"])

    def test_arguments_of_one_type_are_swapped(self):
        declared = "int gsl_G(int, int, double); int Dot(int, int);"
        self.assertEqual(texts("gsl_G(a, b, x); return 'a';", declared), ["", "gsl_G(b, a, x)"])
        self.assertEqual(texts("return Dot(a, b);", declared), ["(Dot(a, b)) + 1"])

    def test_what_is_returned_changes(self):
        self.assertEqual(texts("return a;"), ["(a) + 1"])
        self.assertEqual([place.text for place in found_in("bool gsl_F(bool c) { return c; }").places], ["!(c)"])
        self.assertEqual([place.text for place in found_in("int* gsl_F(int* p) { return p; }").places], ["nullptr"])
        self.assertEqual(found_in("int& gsl_F(int& a) { return a; }").places, [])

    def test_what_the_compiler_must_know_is_counted(self):
        for body, reason, count in [
                ("constexpr int k = 3; return 'a';", "a constant expression", 1),
                ("static int k = 3; return 'a';", "a static variable", 1),
                ("static_assert(1 < 2); return 'a';", "a constant expression", 4),
                ("if constexpr (1 < 2) { return 'a'; } return 'b';", "a constant expression", 4),
                ("switch (a) { case 3: return 'a'; } return 'b';", "a constant expression", 1),
                ("const int& r = a + b; return 'a';", "bound to a reference", 1),
                ("for (a = b; c; ++a) {} return 'a';", "the step of a loop", 1),
                ("return sizeof(a + 1) == sizeof(b);", "not evaluated", 2)]:
            found = found_in(f"int gsl_F(int a, int b, bool c) {{ {body} }}\n")
            self.assertEqual(found.skipped[reason], count, body)

    def test_macros_and_declarations_are_left_alone(self):
        text = "#define SUM(a, b) ((a) + (b))\nint gsl_F(int a, int b = 3) { return SUM(a, b); }\nint gsl_K = 4;\n"
        found = found_in(text)
        self.assertEqual(found.places, [])
        self.assertEqual(found.skipped["written by a macro"], 1)
        self.assertEqual(found.skipped["a declaration"], 1)

    def test_a_template_is_found_once(self):
        text = ("template <class T> T gsl_F(T a, T b) { return a + b; }\ntemplate <class T> struct gsl_S {\n"
                "  T F(T a, T b) const { return a - b; }\n};\n"
                "template struct gsl_S<int>;\nint gsl_G() { return gsl_F('a', 'b'); }\n")
        self.assertEqual([place.text for place in found_in(text).places if place.kind == "arithmetic"],
                         ["a - b", "a + b"])

    def test_a_reader_sees_the_whole_line(self):
        place, = found_in("int gsl_F(int a,\n          int b) {\n  return a + // the rest\n         b;\n}\n").places
        self.assertEqual((place.line, place.function, place.was, place.now),
                         (3, "gsl_F", "return a + b;", "return a - b;"))


class Schemata(unittest.TestCase):
    def test_the_inner_mutants_are_in_the_original_only(self):
        text = "int F() { return a + b < c; }\n"
        outer = places.Place(17, 26, 1, "F", "comparison", "a + b >= c")
        inner = places.Place(17, 22, 1, "F", "arithmetic", "a - b")
        written = schemata.instrumented(text, [(1, outer), (2, inner)], "M.h", "f.cpp")
        self.assertEqual(written, '#include "M.h"\n#line 1 "f.cpp"\nint F() { return (gsl_mutants::On(1) ? (a + b >= c)'
                         ' : ((gsl_mutants::On(2) ? (a - b) : (a + b)) < c)); }\n')

    def test_a_removed_statement_keeps_its_lines(self):
        text = "F(a,\n  b);\n"
        place = places.Place(0, 10, 1, "F", "removed statement", "")
        self.assertEqual(schemata.instrumented(text, [(3, place)], "M.h", "f.cpp").split("\n", 2)[2],
                         "{ if (gsl_mutants::On(3)) {} else F(a,\n  b); }\n")

    def test_a_file_without_mutants_stays(self):
        self.assertEqual(schemata.instrumented("int a;\n", [], "M.h", "f.cpp"), "int a;\n")

    def test_the_mutant_before_an_error_is_to_blame(self):
        source = ('#include "M.h"\n#line 1 "f.cpp"\nint a;\n'
                  'x = (gsl_mutants::On(4) ? (b) : gsl_mutants::On(5) ? (c) : (d));\n')
        column = source.split("\n")[3].index("(c)") + 1
        self.assertEqual(schemata.to_blame(source, "f.cpp", f"f.cpp:2:{column}: error: no"), {5})
        self.assertEqual(schemata.to_blame(source, "f.cpp", "f.cpp:2:9: warning: no\ng.cpp:2:9: error: no"), set())
        needed = (f"g.h:1:1: error: no\nf.cpp:2:{column}: note: in instantiation of F requested here",
                  f"f.cpp:2:{column}:   required from here\ng.h:1:1: error: no")
        for messages in needed:
            self.assertEqual(schemata.to_blame(source, "f.cpp", messages), {5})
            own = f"{messages}\nf.cpp:2:9: error: no".replace("g.h:1:1: error: no", "f.cpp:2:9: error: no")
            self.assertEqual(schemata.to_blame(source, "f.cpp", own), {4})
            # No mutant is on the line of the error, which a template has.
            self.assertEqual(schemata.to_blame(source, "f.cpp", messages.replace("g.h", "f.cpp")), {5})


class Batches(unittest.TestCase):
    def case(self, name, seconds):
        return tests.Test(name, ["/p/some_tests", f"--gtest_filter={name}"], "/", {}, seconds)

    def test_fast_tests_come_first_and_share_a_process(self):
        slow, quick, other = self.case("A.slow", 3.0), self.case("A.quick", 0.02), self.case("B.quick", 0.03)
        script = tests.Test("script", ["/p/script"], "/", {}, 0.01)
        found = tests.batches([slow, quick, script, other])
        self.assertEqual([[test.name for test in batch.tests] for batch in found],
                         [["A.quick", "B.quick"], ["script"], ["A.slow"]])
        self.assertEqual(found[0].command, ["/p/some_tests", "--gtest_filter=A.quick:B.quick", "--gtest_fail_fast"])
        self.assertEqual(found[1].command, ["/p/script"])
        self.assertAlmostEqual(found[0].limit, 1.5)

    def test_a_filter_is_not_too_long_for_a_process(self):
        many = [self.case("A." + "n" * 998, 0.02) for _ in range(200)]
        found = tests.batches(many)
        self.assertEqual(sum(len(batch.tests) for batch in found), 200)
        self.assertLessEqual(max(len(batch.command[1]) for batch in found), tests.LONGEST_FILTER + 20)


class Run(unittest.TestCase):
    def test_a_crash_an_exit_and_an_endless_loop_are_told_apart(self):
        for command, limit, expected in [("exit 0", 9, ""), ("exit 3", 9, "failed"),
                                         ("kill -SEGV $$", 9, "ended by SIGSEGV"), ("sleep 9", 0.1, "ran longer")]:
            end, _, _ = tests.run(["/bin/sh", "-c", command], "/", {}, limit)
            self.assertTrue(end.startswith(expected) and bool(end) == bool(expected), f"{command}: {end}")


class Equivalent(unittest.TestCase):
    def read(self, text):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder) / "equivalent.txt"
            path.write_text(text)
            return main.read_equivalent(path)

    def test_entries_have_a_reason(self):
        self.assertEqual(len(self.read(EQUIVALENT)), 2)
        self.assertEqual(self.read("# Nothing.\n"), {})
        self.assertEqual(self.read("file: a\nfunction: F\nwas: x\nnow: y\nnow: z:0\nwhy: w\n"),
                         {("a", "F", "x", "y"): "w", ("a", "F", "x", "z:0"): "w"})
        with self.assertRaisesRegex(tree.Failed, "file, function, was, now, why"):
            self.read("file: a\nfunction: F\nwas: x\nnow: y\nwhy:\n")
        with self.assertRaisesRegex(tree.Failed, "file, function, was, now, why"):
            self.read("file: a\nwas: x\nnow: y\nwhy: z\n")


@unittest.skipUnless(shutil.which("clang++"), "clang finds the places; the group check of scripts/packages.sh has it")
class Whole(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.root = pathlib.Path(folder.name)
        for name, text in {"CMakeLists.txt": CMAKE, "src/sample.h": HEADER, "src/sample.cpp": SOURCE, "test.cpp": TEST,
                           "other.cpp": "int main() {}\n", "equivalent.txt": EQUIVALENT}.items():
            (cls.root / name).parent.mkdir(exist_ok=True)
            (cls.root / name).write_text(text)
        cls.layout = main.Layout(cls.root, cls.root / "build/mutants", cls.root / "equivalent.txt", ["src/"], [["src/"]], [],
                                 {"src/": ["sample_tests"]}, [])
        cls.status, cls.said = cls.mutate("src/sample.cpp", "--at-least", "98")

    @classmethod
    def mutate(cls, *arguments):
        said = []
        return main.main(["--jobs", "2", *arguments], cls.layout, said.append), "\n".join(said)

    def states(self):
        plan, _ = main.Session(self.layout, main.parsed(["--continue"])).prepared()
        results = main.Results(self.layout.out / "results.txt", "")
        results.plan = results.path.read_text().split("\n", 1)[0]
        results.resume()
        return {(mutant.function, mutant.now): results.states[number] for number, mutant in enumerate(plan, 1)}

    def test_each_mutant_has_its_fate(self):
        states = self.states()
        for function, now, state in [
                ("Plus", "return a - b;", "killed"), ("Below", "return a <= b;", "survived"),
                ("Below", "return a >= b;", "killed"), ("Absolute", "return a <= 0 ? -a : a;", "equivalent"),
                ("Absolute", "return a >= 0 ? -a : a;", "killed"), ("Unused", "return a / a;", "not reached"),
                ("Count", ";", "killed"), ("Last", "if (count <= 0) return values[count - 1];", "killed"),
                ("Twice", "constexpr int Twice() { return N / 2; }", "not reached")]:
            self.assertEqual(states[function, now][0], state, f"{function}: {now}")
        self.assertIn("ran longer than", states["Count", ";"][1])
        self.assertRegex(states["Last", "if (count <= 0) return values[count - 1];"][1], "ended by SIG(ILL|TRAP)")

    def test_the_report_shows_what_lives_and_fails_by_the_share(self):
        self.assertEqual(self.status, 1)
        self.assertIn("survived: src/sample.cpp:12: comparison in Below", self.said)
        self.assertIn("  was: return a < b;\n  now: return a <= b;", self.said)
        self.assertIn("not reached: src/sample.cpp:18: arithmetic in Unused", self.said)
        self.assertIn("at least 98.0 % was expected", self.said)
        self.assertIn("equivalent.txt: src/sample.cpp has no such mutant in Gone: return 1; -> return 0;", self.said)
        self.assertNotIn("no such mutant in Absolute", self.said)

    def test_one_mutant_is_shown(self):
        number = next(line for line in self.said.splitlines() if line.startswith("survived"))
        number = number.split("number ")[1].split(")")[0]
        status, said = self.mutate("--run", number)
        self.assertEqual(status, 0)
        self.assertIn("sample_tests: 1 tests: passed\nsurvived (1 tests)", said)
        with mock.patch("sys.stderr"):
            self.assertEqual(self.mutate("--run", "999")[0], 2)

    def test_a_run_goes_on_where_it_ended(self):
        results = self.layout.out / "results.txt"
        lines = results.read_text().splitlines()
        results.write_text("\n".join(lines[:3]) + "\n")
        with mock.patch.object(tests, "judge", wraps=tests.judge) as judged:
            self.mutate("--continue")
            again = {call.args[0] for call in judged.call_args_list}
        self.assertEqual(len(self.states()), len(lines) - 1)
        kept = {int(line.split("\t")[0]) for line in lines[1:3]}
        self.assertTrue(again and not again & kept)

    def test_the_sample_is_of_one_part_which_the_sources_choose(self):
        made = tree.Tree(self.root, self.layout.out, 2)
        parts = [["src/sample.cpp"], ["src/sample.h"]]
        layout = dataclasses.replace(self.layout, held=parts)
        source = self.root / "src/sample.cpp"
        self.addCleanup(source.write_text, SOURCE)
        chosen = []
        for count in range(20):
            source.write_text(SOURCE + "\n" * count)
            chosen.append(main.held(made, layout))
            self.assertEqual(main.held(made, layout), chosen[-1])
        self.assertEqual({*map(tuple, chosen)}, {*map(tuple, parts)})

    def test_the_sample_is_chosen_by_the_sources(self):
        _, listed = self.mutate("--sample", "5", "--list")
        self.assertEqual(listed.count("(number "), 5)
        self.assertEqual(self.mutate("--sample", "5", "--list")[1], listed)
        made = tree.Tree(self.root, self.layout.out, 2)
        made.find(["src/sample.cpp"])
        one = [mutant.now for mutant, _ in main.by_hash(made, made.mutants())]
        source = self.root / "src/sample.cpp"
        self.addCleanup(source.write_text, SOURCE)
        source.write_text(SOURCE + "\n")
        self.assertNotEqual([mutant.now for mutant, _ in main.by_hash(made, made.mutants())], one)

    def test_the_rest_has_no_mutant_of_the_whole(self):
        def listed(whole, *arguments):
            with mock.patch.multiple(self.layout, whole=whole, sampled=["src/"]):
                return self.mutate(*arguments, "--list")[1]

        rest = listed(["src/sample.h"], "--rest", "5")
        self.assertEqual(rest.count("(number "), 5)
        self.assertEqual(listed(["src/sample.h"], "--rest", "5"), rest)
        every = listed(["src/sample.cpp"], "--all").count("(number ")
        self.assertGreater(every, 5)
        self.assertEqual(listed(["src/sample.h"], "--rest", "1000").count("(number "), every)
        self.assertEqual(listed(["src/sample.cpp"], "--rest", "1000").count("(number "), 0)
        with mock.patch("sys.stderr"):
            self.assertRaises(SystemExit, main.parsed, ["--rest", "0"])
            self.assertRaises(SystemExit, main.parsed, ["--rest", "5", "--all"])

    def test_a_test_that_fails_without_a_mutant_is_named(self):
        test = self.root / "test.cpp"
        self.addCleanup(test.write_text, TEST)
        test.write_text(TEST.replace("Plus(2, 3) == 5", "Plus(2, 3) == 6"))
        with mock.patch("sys.stderr") as said:
            self.assertEqual(self.mutate("src/sample.cpp")[0], 2)
        self.assertIn("plus fails without a mutant (failed)", "".join(call.args[0] for call in said.write.mock_calls))


if __name__ == "__main__":
    unittest.main()
