"""Plants one forbidden include after the other: scripts/check_includes.py must name each."""

import pathlib
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "scripts"))
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
    "gsl/impl/gsl_Private.h": '#include "kernel/Line.h"\n',
    "gsl/impl/gsl_Point.cpp": '#include "gsl_Point.h"\n#include "gsl_Private.h"\n',
    "gsl/persist/Records.h": "",
    "gsl/persist/Records.cpp": '#include "Records.h"\n#include "kernel/Constants.h"\n',
    "sweep/Sweep.h": '#include "gsl_Point.h"\n#include <tbb/parallel_for.h>\n',
    "tools/gsl-sweep.cpp": '#include "Sweep.h"\n#include <CLI/CLI.hpp>\n',
    "examples/move.cpp": '#include "gsl_Point.h"\n',
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
        self.refuses("gsl/host/omu/omu_New.h", '"gsl_Point.h"', "host may not include")

    def test_stand_ins_are_private_to_their_prefix(self):
        self.refuses("gsl/host/cow/standin/cow.cpp", '"Private.h"', "another prefix")
        self.refuses("gsl/impl/gsl_New.cpp", '"Private.h"', "impl may not include")

    def test_public_headers_see_no_implementation(self):
        self.refuses("gsl/include/gsl_New.h", '"kernel/Line.h"', "include may not include")
        self.refuses("gsl/include/gsl_New.h", '"gsl_Private.h"', "include may not include")

    def test_kernels_see_arithmetic_and_kernels_only(self):
        self.refuses("gsl/impl/kernel/New.h", '"gsl_Point.h"', "kernel may not include")
        self.refuses("gsl/impl/kernel/New.h", '"cls_Uid.h"', "kernel may not include")
        self.refuses("gsl/impl/kernel/New.h", '"gsl_Private.h"', "kernel may not include")

    def test_the_library_sees_the_standard_library_alone(self):
        for source in ("gsl/impl/gsl_New.cpp", "gsl/persist/New.cpp", "gsl/include/gsl_New.h",
                       "gsl/impl/kernel/New.h", "gsl/host/mem/mem_New.h"):
            self.refuses(source, "<Eigen/Core>", "standard library")

    def test_persistence_sees_no_kernel_but_the_constants(self):
        self.refuses("gsl/persist/New.cpp", '"kernel/Line.h"', "persist may not include")

    def test_implementation_sees_no_persistence(self):
        self.refuses("gsl/impl/gsl_New.cpp", '"Records.h"', "impl may not include")

    def test_programs_see_no_implementation(self):
        for source in ("sweep/New.cpp", "model/New.cpp", "tools/New.cpp", "examples/new.cpp"):
            self.refuses(source, '"gsl_Private.h"', "may not include")

    def test_an_unknown_header_is_named(self):
        self.refuses("gsl/impl/gsl_New.cpp", '"gsl_Nowhere.h"', "no file of this project")

    def test_a_name_that_stands_twice_is_ambiguous(self):
        problems = problems_with({"gsl/persist/Line.h": "", "gsl/impl/gsl_New.cpp": '#include "Line.h"\n'})
        self.assertEqual(len(problems), 1, problems)
        self.assertIn("ambiguous", problems[0])

    def test_an_include_inside_a_block_comment_does_not_count(self):
        self.assertEqual(problems_with({"gsl/impl/kernel/New.h": '/*\n#include "gsl_Point.h"\n*/\n'}), [])


if __name__ == "__main__":
    unittest.main()
