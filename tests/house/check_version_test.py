"""scripts/check_version.py notices each place that has another version, and a place that is gone."""

import pathlib
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "scripts"))
import check_version


def problems(pattern, text, least=1):
    return list(check_version.disagreements("3.14.15", "place", pattern, least, [("file", text)]))


class CheckVersion(unittest.TestCase):
    def test_full_and_minor_versions_agree(self):
        self.assertEqual(problems(rf"^version: {check_version.FULL}$", "a\nversion: 3.14.15\nb\n"), [])
        self.assertEqual(problems(rf"lib{check_version.MINOR}\b", "lib3.14"), [])

    def test_another_version_is_named(self):
        found = problems(rf"^version: {check_version.FULL}$", "version: 3.14.16\n")
        self.assertEqual(found, ["file: the version is 3.14.16; expected 3.14.15"])
        found = problems(rf"lib{check_version.MINOR}\b", "lib3.14 lib3.1")
        self.assertEqual(found, ["file: the version is 3.1; expected 3.14"])

    def test_a_missing_place_is_named(self):
        self.assertIn("1 places have the version; expected at least 2", problems("lib([0-9.]+)$", "lib3.14", 2)[0])

    def test_the_newest_release_counts(self):
        pattern = next(pattern for place, pattern, _ in check_version.PLACES if place == "CHANGELOG.md")
        text = "## [Unreleased]\n\n## [3.14.15] - 2026-11-22\n\n## [3.14.14] - 2026-11-21\n"
        self.assertEqual(problems(pattern, text), [])
        self.assertEqual(len(problems(pattern, "## [Unreleased]\n")), 1)
        self.assertEqual(len(problems(pattern, text.replace("3.14.15", "3.14.13"))), 1)

    def test_the_header_states_the_version(self):
        header = "".join(f"#define GSL_VERSION_{part} {n}\n" for part, n in (("MAJOR", 3), ("MINOR", 14), ("PATCH", 15)))
        self.assertEqual(check_version.stated(header), "3.14.15")


if __name__ == "__main__":
    unittest.main()
