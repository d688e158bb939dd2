"""scripts/check_exports.py notices what is missing, what is not listed and another version; the loader refuses it."""

import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "scripts"))
import check_exports

SIZE, WEIGHT, INLINE = "_Z4Sizev", "_Z6Weightd", "_Z4Evenv"
SCRIPT = check_exports.script_of("libgsl_sample", "GSL_1.2", [WEIGHT, SIZE])
EXPORTED = {SIZE: "GLOBAL", WEIGHT: "GLOBAL"}


def problems(script=SCRIPT, node="GSL_1.2", exported=EXPORTED, declared=EXPORTED, strong=False):
    return list(check_exports.problems(script, node, exported, declared, strong))


class Comparison(unittest.TestCase):
    def test_equal_lists_pass(self):
        self.assertEqual(problems(), [])

    def test_a_removed_name_is_noticed(self):
        self.assertEqual(problems(exported={SIZE: "GLOBAL"}), ["listed, but not exported: Weight(double)"])

    def test_a_name_that_is_not_listed_is_noticed(self):
        declared = {**EXPORTED, INLINE: "WEAK"}
        self.assertEqual(problems(declared=declared), ["declared for export, but not listed: Even()"])
        self.assertEqual(problems(declared=declared, strong=True), [])
        declared[INLINE] = "GLOBAL"
        self.assertEqual(problems(declared=declared, strong=True), ["declared for export, but not listed: Even()"])

    def test_another_version_is_noticed(self):
        self.assertEqual(problems(node="GSL_1.3"), ["the version is GSL_1.2; expected GSL_1.3"])
        self.assertEqual(problems(script=SCRIPT.replace("GSL_1.2 {", "{"))[0], "the version is missing; expected GSL_1.2")

    def test_a_script_without_names_is_noticed(self):
        self.assertIn("no name is listed", problems(script="GSL_1.2 {\n  local:\n    *;\n};\n"))

    def test_variants_of_a_constructor_count_as_one(self):
        script = check_exports.script_of("libgsl_sample", "GSL_1.2", ["_ZN1AC1Ev", "_ZN1AC2Ev"])
        one = {"_ZN1AC2Ev": "GLOBAL"}
        self.assertEqual(problems(script=script, exported=one, declared=one), [])

    def test_the_version_is_that_of_the_headers(self):
        header = "#define GSL_VERSION_MAJOR 3\n#define GSL_VERSION_MINOR 14\n#define GSL_VERSION_PATCH 15\n"
        self.assertEqual(check_exports.node_of(header), "GSL_3.14")


class Libraries(unittest.TestCase):
    """Real files: what the linker and the loader make of a script."""

    SOURCE = """
#include <map>
#define API __attribute__((visibility("default")))
API int Size() { std::map<int, int> sizes; sizes[1] = 2; return sizes[1]; }
API double Weight(double w) { return w; }
int Hidden() { return 3; }
"""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.compiler = os.environ.get("CXX", "c++").split()
        (self.folder / "sample.cpp").write_text(self.SOURCE)
        (self.folder / "user.cpp").write_text("int Size();\nint main() { return Size() - 2; }\n")
        self.compile("-fPIC", "-fvisibility=hidden", "-c", "sample.cpp", "-o", "sample.o")

    def compile(self, *arguments):
        subprocess.run([*self.compiler, *arguments], cwd=self.folder, check=True)

    def link(self, script):
        (self.folder / "sample.map").write_text(script)
        self.compile("-shared", "-Wl,-soname,libsample.so", "-Wl,--version-script=sample.map", "sample.o", "-o", "libsample.so")

    def visible(self, table, file):
        return set(check_exports.visible(table, [self.folder / file]))

    def test_only_what_is_listed_is_exported(self):
        self.assertEqual(self.visible("--syms", "sample.o"), {SIZE, WEIGHT})
        self.link(check_exports.script_of("libsample", "GSL_1.2", [SIZE]))
        self.assertEqual(self.visible("--dyn-syms", "libsample.so"), {SIZE})

    def test_the_loader_refuses_another_version(self):
        self.link(SCRIPT)
        self.compile("user.cpp", "-L.", "-lsample", "-o", "user")
        command = [self.folder / "user"]
        environment = {**os.environ, "LD_LIBRARY_PATH": str(self.folder)}
        self.assertEqual(subprocess.run(command, env=environment, check=False).returncode, 0)
        self.link(SCRIPT.replace("GSL_1.2", "GSL_1.3"))
        refused = subprocess.run(command, env=environment, check=False, capture_output=True, text=True)
        self.assertNotEqual(refused.returncode, 0)
        self.assertIn("version `GSL_1.2' not found", refused.stderr)


if __name__ == "__main__":
    unittest.main()
