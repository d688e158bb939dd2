"""scripts/release refuses an unclean tree and a version without a dated section, before it makes anything."""

import pathlib
import shutil
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
FILES = ("scripts/release", "scripts/lib.sh", "scripts/packages.sh", "gsl/include/gsl_Version.h", "CHANGELOG.md")


class Release(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.tree = pathlib.Path(folder.name)
        for name in FILES:
            (self.tree / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(ROOT / name, self.tree / name)
        self.git("init", "-q")
        self.commit()

    def git(self, *arguments):
        who = ["-c", "user.name=somebody", "-c", "user.email=somebody@example.invalid", "-c", "commit.gpgsign=false"]
        subprocess.run(["git", *who, *arguments], cwd=self.tree, check=True)

    def commit(self):
        self.git("add", "-A")
        self.git("commit", "-q", "-m", "tree")

    def refusal(self):
        done = subprocess.run([self.tree / "scripts/release"], capture_output=True, text=True, check=False)
        self.assertEqual(done.returncode, 1, done.stdout + done.stderr)
        self.assertFalse((self.tree / "build").exists())
        return done.stderr

    def test_an_unclean_tree_is_refused_with_the_names(self):
        (self.tree / "planted").write_text("new\n")
        self.assertEqual(
            self.refusal(),
            "release: the tree has changes that are not committed; commit or remove them first:\n?? planted\n",
        )
        (self.tree / "planted").unlink()
        with (self.tree / "CHANGELOG.md").open("a") as changelog:
            changelog.write("more\n")
        self.assertIn(" M CHANGELOG.md\n", self.refusal())

    def test_a_version_without_a_dated_section_is_refused(self):
        changelog = self.tree / "CHANGELOG.md"
        lines = changelog.read_text().splitlines(keepends=True)
        changelog.write_text("".join(line for line in lines if not line.startswith("## [") or "Unreleased" in line))
        self.commit()
        self.assertIn("release: CHANGELOG.md has no section '## [", self.refusal())


if __name__ == "__main__":
    unittest.main()
