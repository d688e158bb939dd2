"""Spoils the notices in each place in turn: scripts/check_notices.py must say what is missing."""

import pathlib
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "scripts"))
import check_notices

PACKAGES = ["cmake", "g++", "python3-dev", "libone-dev", "two-dev"]
NOTICES = """Notices

  compiled in  One  [libone-dev]
               Two  [two-dev]


One [libone-dev]
----------------
Copyright (c) 2001 Somebody

The MIT licence, whose text is at the end.


Two [two-dev]
-------------
Copyright (C) 2002 Somebody else

Do as you like.


The MIT licence
---------------
Permission is hereby granted.
"""


class CheckNotices(unittest.TestCase):
    def problems_of(self, packages, notices):
        return list(check_notices.problems(packages, notices))

    def test_a_section_for_each_library_passes(self):
        self.assertEqual(self.problems_of(PACKAGES, NOTICES), [])

    def test_a_library_without_a_section_is_named(self):
        self.assertEqual(self.problems_of(PACKAGES + ["libthree-dev"], NOTICES), ["libthree-dev has no section"])

    def test_a_bundled_library_needs_a_section_too(self):
        self.assertEqual(list(check_notices.problems(PACKAGES, NOTICES, ["three"])), ["three has no section"])

    def test_a_row_of_the_list_is_not_a_section(self):
        cut = NOTICES.replace("Two [two-dev]\n-------------\nCopyright (C) 2002 Somebody else\n\nDo as you like.\n", "")
        self.assertEqual(self.problems_of(PACKAGES, cut), ["two-dev has no section"])

    def test_a_section_of_nothing_is_named(self):
        self.assertEqual(self.problems_of(PACKAGES[:4], NOTICES), ["two-dev has a section, but no program is built with two-dev"])

    def test_the_holder_must_be_named(self):
        self.assertEqual(self.problems_of(PACKAGES, NOTICES.replace("Copyright (C) 2002", "By")),
                         ["two-dev: the section does not name the holder of the copyright"])

    def test_the_public_domain_has_no_holder(self):
        free = NOTICES.replace("Copyright (C) 2002 Somebody else", "In the public domain: nobody claims a copyright.")
        self.assertEqual(self.problems_of(PACKAGES, free), [])

    def test_a_promised_licence_must_be_there(self):
        cut = NOTICES.replace("The MIT licence\n---------------\n", "")
        self.assertEqual(self.problems_of(PACKAGES, cut), ["libone-dev: the text of the MIT licence is missing"])


if __name__ == "__main__":
    unittest.main()
