"""Plants each forbidden include in turn: scripts/check_includes.py must name each."""

import pathlib
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "scripts"))
import check_includes

TREE = {
    "gsl/host/mem/mem_Export.h": "#include <cstddef>\n",
    "gsl/host/cow/cow_String.h": '#include "mem_Export.h"\n',
    "gsl/host/cls/cls_Uid.h": '#include "mem_Export.h"\n',
    "gsl/host/cls/cls_List.h": '#include "nex_Exception.h"\n',
    "gsl/host/nex/nex_Exception.h": '#include "cls_Uid.h"\n#include "cow_String.h"\n',
    "gsl/host/nex/standin/nex_Exception.cpp": '#include "nex_Exception.h"\n#include <pthread.h>\n',
    "gsl/host/nex/standin/Private.h": "",
    "gsl/include/gsl_Arithmetic.h": "#include <cmath>\n",
    "gsl/include/gsl_Point.h": '#include "cls_Uid.h"\n#include "gsl_Arithmetic.h"\n',
    "gsl/impl/kernel/Constants.h": "",
    "gsl/impl/kernel/Line.h": '#include "gsl_Arithmetic.h"\n#include "kernel/Constants.h"\n',
    "gsl/impl/wide/Lanes.h": "#include <cstddef>\n",
    "gsl/impl/wide/Solve.cpp": '#include "wide/Lanes.h"\n',
    "gsl/impl/gsl_Private.h": '#include "kernel/Line.h"\n#include "wide/Lanes.h"\n',
    "gsl/impl/gsl_Point.cpp": '#include "gsl_Point.h"\n#include "gsl_Private.h"\n',
    "gsl/persist/Records.h": "",
    "gsl/persist/Records.cpp": '#include "Records.h"\n#include "kernel/Constants.h"\n',
    "records/include/gsl_RecordStore.h": "#include <vector>\n",
    "records/gsl_RecordStore.cpp": '#include "gsl_RecordStore.h"\n',
    "gsl/host/cls/standin/cls_Save.cpp": '#include "cls_List.h"\n#include "gsl_RecordStore.h"\n',
    "exact/Ratio.h": '#include "gsl_Arithmetic.h"\n',
    "mesh/Mesh.h": '#include "gsl_Arithmetic.h"\n',
    "mesh/MeshRead.h": '#include "Mesh.h"\n',
    "mesh/MeshRead.cpp": '#include "MeshRead.h"\n#include "readers/Scanner.h"\n#include <unistd.h>\n',
    "mesh/readers/Scanner.h": '#include "Mesh.h"\n',
    "mesh/readers/MeshReadAssimp.h": '#include "Mesh.h"\n',
    "mesh/readers/MeshReadAssimp.cpp": '#include "readers/MeshReadAssimp.h"\n#include <assimp/scene.h>\n',
    "mesh/writers/Numbers.h": '#include "Mesh.h"\n',
    "sweep/Sweep.h": '#include "Ratio.h"\n',
    "tools/gsl-sweep.cpp": '#include "Sweep.h"\n#include "MeshRead.h"\n#include "support/Report.h"\n#include <CLI/CLI.hpp>\n',
    "tools/support/Report.h": '#include "Sweep.h"\n#include <nlohmann/json.hpp>\n',
    "examples/move.cpp": "#include <gsl_Point.h>\n#include <vector>\n",
    "bench/bench.cpp": '#include "Judge.h"\n#include <benchmark/benchmark.h>\n',
    "fuzz/fuzz.cpp": '#include "MeshRead.h"\n',
    "tests/consumer/consumer.cpp": '#include <gsl_Point.h>\n#include "check.h"\n',
    "tests/consumer/check.h": "",
    "tests/reference/Judge.h": '#include "Shapes.h"\n#include "gsl_Point.h"\n#include <gmpxx.h>\n',
    "tests/support/Shapes.h": '#include "Mesh.h"\n',
    "tests/sweep/Sweep_test.cpp": '#include "Sweep.h"\n#include "Shapes.h"\n#include "Judge.h"\n#include <gtest/gtest.h>\n',
}


def problems_with(changes):
    with tempfile.TemporaryDirectory() as folder:
        for name, text in {**TREE, **changes}.items():
            path = pathlib.Path(folder) / name
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text)
        return check_includes.check(folder)[0]


class CheckIncludes(unittest.TestCase):
    def refuses(self, source, include, reason):
        problems = problems_with({source: f"\n#include {include}\n"})
        self.assertEqual(len(problems), 1, problems)
        self.assertTrue(problems[0].startswith(f"{source}:2: "), problems)
        self.assertIn(reason, problems[0])

    def test_a_tree_that_keeps_the_rules_passes(self):
        self.assertEqual(problems_with({}), [])

    def test_host_headers_see_earlier_prefixes_only(self):
        self.refuses("gsl/host/mem/mem_New.h", '"cow_String.h"', "order of the prefixes")

    def test_the_uid_header_comes_before_exceptions(self):
        self.refuses("gsl/host/cls/cls_Uid.h", '"nex_Exception.h"', "order of the prefixes")

    def test_exceptions_see_no_container_but_the_uid(self):
        self.refuses("gsl/host/nex/nex_New.h", '"cls_List.h"', "order of the prefixes")

    def test_host_headers_see_no_public_header(self):
        self.refuses("gsl/host/omu/omu_New.h", '"gsl_Point.h"', "gsl/host/ may not include")

    def test_stand_ins_are_private_to_their_prefix(self):
        self.refuses("gsl/host/cow/standin/cow.cpp", '"Private.h"', "another prefix")
        self.refuses("gsl/impl/gsl_New.cpp", '"Private.h"', "gsl/impl/ may not include")

    def test_public_headers_see_no_implementation(self):
        for header in ("kernel/Line.h", "wide/Lanes.h", "gsl_Private.h"):
            self.refuses("gsl/include/gsl_New.h", f'"{header}"', "gsl/include/ may not include")

    def test_kernels_see_arithmetic_and_kernels_only(self):
        for header in ("gsl_Point.h", "cls_Uid.h", "gsl_Private.h", "wide/Lanes.h"):
            self.refuses("gsl/impl/kernel/New.h", f'"{header}"', "gsl/impl/kernel/ may not include")

    def test_wide_code_sees_nothing_but_itself(self):
        for header in ("gsl_Point.h", "gsl_Private.h", "kernel/Line.h"):
            self.refuses("gsl/impl/wide/New.h", f'"{header}"', "gsl/impl/wide/ may not include")

    def test_the_library_sees_the_standard_library_alone(self):
        for source in ("gsl/impl/gsl_New.cpp", "gsl/impl/wide/New.h", "gsl/persist/New.cpp", "gsl/include/gsl_New.h",
                       "gsl/impl/kernel/New.h", "gsl/host/mem/mem_New.h", "exact/New.h", "sweep/New.h"):
            self.refuses(source, "<Eigen/Core>", "standard library")

    def test_persistence_sees_no_kernel_but_the_constants(self):
        self.refuses("gsl/persist/New.cpp", '"kernel/Line.h"', "gsl/persist/ may not include")

    def test_implementation_sees_no_persistence(self):
        self.refuses("gsl/impl/gsl_New.cpp", '"Records.h"', "gsl/impl/ may not include")

    def test_programs_see_no_implementation(self):
        for source in ("exact/New.cpp", "mesh/New.cpp", "sweep/New.cpp", "tools/New.cpp"):
            self.refuses(source, '"gsl_Private.h"', "may not include")
        self.refuses("examples/new.cpp", "<gsl_Private.h>", "may not include")

    def test_exact_arithmetic_sees_nothing_but_coordinates(self):
        for header in ("gsl_Point.h", "Mesh.h", "Sweep.h"):
            self.refuses("exact/New.h", f'"{header}"', "exact/ may not include")

    def test_meshes_see_neither_the_engine_nor_the_programs(self):
        for source in ("mesh/New.cpp", "mesh/readers/New.cpp", "mesh/writers/New.cpp"):
            self.refuses(source, '"Sweep.h"', "may not include")
            self.refuses(source, '"support/Report.h"', "may not include")

    def test_readers_and_writers_do_not_see_each_other(self):
        self.refuses("mesh/readers/New.cpp", '"writers/Numbers.h"', "may not include")
        self.refuses("mesh/writers/New.cpp", '"readers/Scanner.h"', "may not include")

    def test_the_engine_sees_no_mesh_file_and_no_program(self):
        for header in ("MeshRead.h", "readers/Scanner.h", "support/Report.h"):
            self.refuses("sweep/New.cpp", f'"{header}"', "sweep/ may not include")

    def test_one_library_for_one_room(self):
        self.refuses("mesh/New.cpp", "<assimp/scene.h>", "standard library")
        self.refuses("mesh/readers/New.cpp", "<nlohmann/json.hpp>", "standard library")
        self.refuses("tools/New.cpp", "<assimp/scene.h>", "standard library")

    def test_programs_see_one_reader_only(self):
        self.assertEqual(problems_with({"tools/New.cpp": '#include "readers/MeshReadAssimp.h"\n'}), [])
        self.refuses("tools/New.cpp", '"readers/Scanner.h"', "tools/ may not include")

    def test_benchmarks_see_of_the_tests_the_references_and_random_numbers_only(self):
        self.assertEqual(problems_with({"tests/support/RandomNumbers.h": "",
                                        "bench/New.cpp": '#include "RandomNumbers.h"\n'}), [])
        self.refuses("bench/New.cpp", '"Shapes.h"', "bench/ may not include")
        self.refuses("bench/New.cpp", '"tests/sweep/Sweep_test.cpp"', "bench/ may not include")

    def test_nothing_sees_benchmarks_and_the_product_sees_no_test(self):
        self.refuses("tests/sweep/New.cpp", '"bench/bench.cpp"', "tests/ may not include")
        self.refuses("sweep/New.cpp", '"Shapes.h"', "sweep/ may not include")
        self.refuses("tests/support/New.h", '"Judge.h"', "tests/support/ may not include")

    def test_angle_brackets_hide_nothing(self):
        self.refuses("gsl/include/gsl_New.h", "<../impl/kernel/Line.h>", "may not include gsl/impl/kernel/Line.h")
        self.refuses("gsl/impl/kernel/New.h", "<gsl_Point.h>", "may not include gsl/include/gsl_Point.h")
        self.refuses("examples/new.cpp", "<kernel/Line.h>", "may not include gsl/impl/kernel/Line.h")

    def test_a_path_upwards_hides_nothing(self):
        self.refuses("gsl/include/gsl_New.h", '"../impl/kernel/Line.h"', "may not include gsl/impl/kernel/Line.h")
        self.refuses("gsl/include/gsl_New.h", '"../nowhere/../kernel/Line.h"', "may not include gsl/impl/kernel/Line.h")

    def test_headers_of_the_project_are_quoted_where_they_are_its_own(self):
        self.refuses("gsl/impl/gsl_New.cpp", "<gsl_Point.h>", "included in quotes")
        self.refuses("tests/sweep/New.cpp", "<Mesh.h>", "included in quotes")

    def test_users_write_angle_brackets(self):
        self.refuses("examples/new.cpp", '"gsl_Point.h"', "as users do")
        self.refuses("tests/consumer/new.cpp", '"gsl_Point.h"', "as users do")

    def test_a_file_belongs_to_a_room(self):
        problems = problems_with({"attic/New.h": ""})
        self.assertEqual(problems, ["attic/New.h: does not belong to a room of scripts/check_includes.py"])

    def test_records_know_nothing_of_the_host_and_visitors_nothing_of_the_store(self):
        self.refuses("records/gsl_New.cpp", '"cls_Uid.h"', "may not include")
        self.refuses("gsl/host/cls/cls_New.h", '"gsl_RecordStore.h"', "may not include")
        self.refuses("gsl/persist/gsl_New.cpp", '"gsl_RecordStore.h"', "may not include")

    def test_each_file_sees_one_of_the_two_hosts(self):
        second = {
            "tests/external_host/include/cow_String.h": "",
            "tests/external_host/src/cow.cpp": '#include "cow_String.h"\n',
            "gsl/persist/New.cpp": '#include "cow_String.h"\n',
        }
        self.assertEqual(problems_with(second), [])
        self.refuses("tests/external_host/src/cow.cpp", '"Mesh.h"', "may not include")

    def test_an_unknown_header_is_named(self):
        self.refuses("gsl/impl/gsl_New.cpp", '"gsl_Nowhere.h"', "not a file of this project")

    def test_a_name_that_stands_twice_is_ambiguous(self):
        problems = problems_with({"gsl/persist/Line.h": "", "gsl/impl/gsl_New.cpp": '#include "Line.h"\n'})
        self.assertEqual(len(problems), 1, problems)
        self.assertIn("ambiguous", problems[0])

    def test_an_include_inside_a_block_comment_does_not_count(self):
        self.assertEqual(problems_with({"gsl/impl/kernel/New.h": '/*\n#include "gsl_Point.h"\n*/\n'}), [])


class Table(unittest.TestCase):
    def test_each_row_names_rooms_headers_and_libraries_that_there_are(self):
        folders = {room.folder for room in check_includes.ROOMS}
        for room in check_includes.ROOMS:
            for entry in check_includes.allowed(room):
                is_known = entry in folders or entry in check_includes.LIBRARIES or (ROOT / entry).is_file()
                is_known = is_known or entry == check_includes.PRODUCT
                self.assertTrue(is_known, f"{room.folder} may include {entry}, which is nothing")

    def test_the_order_of_the_prefixes_is_the_one_in_the_documents(self):
        prefixes = [name for name in check_includes.HOST_ORDER if name != "cls_Uid"]
        folders = {folder.name for folder in (ROOT / "gsl/host").iterdir() if folder.is_dir()}
        self.assertEqual(set(prefixes), folders)
        self.assertIn(f"in the order {', '.join(prefixes)};", " ".join((ROOT / "docs/host.md").read_text().split()))
        self.assertIn(" ".join(prefixes) + " ", " ".join((ROOT / "README.md").read_text().split()))

    def test_contributing_shows_it(self):
        shown = [line for line in (ROOT / "CONTRIBUTING.md").read_text().splitlines() if line.startswith("|")]
        first = shown.index("| room | holds | may include |")
        expected = list(check_includes.table())
        self.assertEqual(shown[first : first + len(expected)], expected, "see scripts/check_includes.py --table")


if __name__ == "__main__":
    unittest.main()
