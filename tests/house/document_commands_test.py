"""Types small documents: the commands of scripts/document_commands.py must run as they are written."""

import pathlib
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "scripts"))
import document_commands

DOCUMENT = """Text, and a command that is only shown:

```
false
```

```text app/words.txt
it's "quoted" $HOME \\n
```

```sh
export GREETING=hello   # kept for the next line
echo "$GREETING" \\
  world
cat app/words.txt
```

```cpp
int main() {}
```
"""


class DocumentCommands(unittest.TestCase):
    def run_script(self, *documents):
        script, count = document_commands.script_of(documents)
        with tempfile.TemporaryDirectory() as folder:
            done = subprocess.run(["bash", "-c", script], cwd=folder, capture_output=True, text=True, env={"HOME": "/nowhere", "PATH": "/usr/bin:/bin"})
        return count, done

    def test_commands_and_files_are_typed_in_order(self):
        count, done = self.run_script(DOCUMENT)
        self.assertEqual((count, done.returncode, done.stderr), (3, 0, ""))
        said = [line for line in done.stdout.splitlines() if not line.startswith("$ #")]
        self.assertEqual(said, [
            "$ export GREETING=hello   # kept for the next line",
            '$ echo "$GREETING"    world',
            "hello world",
            "$ cat app/words.txt",
            'it\'s "quoted" $HOME \\n',
        ])

    def test_the_first_failure_ends_it(self):
        _, done = self.run_script("```sh\necho one\nfalse\necho two\n```\n")
        self.assertNotEqual(done.returncode, 0)
        self.assertIn("$ false", done.stdout)
        self.assertNotIn("two", done.stdout)

    def test_a_failure_in_a_pipe_counts(self):
        _, done = self.run_script("```sh\nfalse | cat\n```\n")
        self.assertNotEqual(done.returncode, 0)

    def test_documents_follow_one_another(self):
        count, done = self.run_script("```sh\nexport A=1\n```\n", "```sh\necho \"A is $A\"\n```\n")
        self.assertEqual(count, 2)
        self.assertIn("A is 1", done.stdout)

    def test_a_document_without_commands_is_refused(self):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder) / "empty.md"
            path.write_text("```\nls\n```\n")
            done = subprocess.run([sys.executable, document_commands.__file__, path], capture_output=True, text=True)
        self.assertEqual((done.returncode, done.stdout), (1, ""))
        self.assertIn("no block of commands", done.stderr)


if __name__ == "__main__":
    unittest.main()
