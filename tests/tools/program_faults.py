#!/usr/bin/env python3
"""Ends the programs where it hurts: signals, limits, closed streams, a full disk.

usage: program_faults.py FOLDER-OF-PROGRAMS FOLDER-OF-MESHES FILE-OF-RECORDS [TEST...]

Each program ends as its help says, or by the signal. An output is then the whole new file, the old file, or absent,
and nothing else is left: no temporary file, no process. GSL_FAULTS is the number of moments and limits for each
command, 4 if it is not set. GSL_DISK names a folder on a small file system for the full disk; root mounts its own.
"""

import ctypes
import errno
import os
import random
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

PROGRAMS, MESHES, RECORDS = (Path(argument).resolve() for argument in sys.argv[1:4])
COUNT = int(os.environ.get("GSL_FAULTS", "4"))
OLD = b"the old file\n"
SIGNALS = [signal.SIGINT, signal.SIGTERM, signal.SIGHUP, signal.SIGQUIT, signal.SIGPIPE, signal.SIGXCPU]
LIMIT = 120  # seconds that no command takes


class Command:
    """A command line, what it reads in its folder, and what it writes there."""

    def __init__(self, words, outputs, inputs=("bolt.stl", "bracket.stl"), status=0):
        self.words, self.outputs, self.inputs, self.status = words.split(), outputs, inputs, status

    def __str__(self):
        return " ".join(self.words)


COMMANDS = [
    Command("gsl-sweep bolt.stl bracket.stl -d -z --output moved.ply --json a.json --picture a.svg", ["moved.ply", "a.json", "a.svg"]),
    Command("gsl-sweep bolt.stl bracket.stl -d -z --output scene.glb --view a.html --picture a.pdf", ["scene.glb", "a.html", "a.pdf"]),
    Command("gsl-sweep bolt.stl bracket.stl --sphere 800 --view a.html --picture a.png", ["a.html", "a.png"]),
    Command("gsl-sweep made.glb bracket.stl -d -z --json a.json", ["a.json"], ("made.glb", "bracket.stl")),
    Command("gsl-mesh convert bolt.stl out.obj", ["out.obj"]),
    Command("gsl-mesh check bolt.stl bracket.stl --json a.json", ["a.json"]),
    Command("gsl-model every.gslr convert out.gslm", ["out.gslm"], ("every.gslr",)),
    Command("gsl-model made.gslm convert out.gslr", ["out.gslr"], ("made.gslm",)),
    Command("gsl-model made.gslm list --json a.json", ["a.json"], ("made.gslm",)),
]


class Place:
    """A new folder with the inputs of a command, and old outputs if they are wanted."""

    def __init__(self, command, old, parent=None):
        self.command, self.old = command, old
        self.path = Path(tempfile.mkdtemp(prefix="faults-", dir=parent))
        self.scratch = Path(tempfile.mkdtemp(prefix="scratch-"))
        for name in command.inputs:
            (self.path / name).symlink_to(INPUTS / name)
        for name in command.outputs if old else ():
            (self.path / name).write_bytes(OLD)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        shutil.rmtree(self.path)
        shutil.rmtree(self.scratch)

    def start(self, limits=(), closed=(), **streams):
        def prepare():
            for which, value in limits:
                resource.setrlimit(which, value if isinstance(value, tuple) else (value, value))
            resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
            for stream in closed:
                os.close(stream)

        words = [PROGRAMS / self.command.words[0], *self.command.words[1:]]
        words += ["--force"] if self.old else []
        pipes = {"stdin": subprocess.DEVNULL, "stdout": subprocess.PIPE, "stderr": subprocess.PIPE, **streams}
        environment = {**os.environ, "TMPDIR": str(self.scratch), "LC_ALL": "C"}
        return subprocess.Popen(words, cwd=self.path, env=environment, preexec_fn=prepare, start_new_session=True, **pipes)

    def left(self):
        """Returns what was left beside the inputs, by name."""
        files = {path.name: path for path in self.path.iterdir() if path.name not in self.command.inputs}
        return {name: path.read_bytes() for name, path in files.items()}


INPUTS = Path()
WHOLE = {}  # of each command, the bytes of its outputs
SECONDS = {}  # and its time


def setUpModule():
    global INPUTS
    INPUTS = Path(tempfile.mkdtemp(prefix="inputs-"))
    for name in ("bolt.stl", "bracket.stl"):
        shutil.copy(MESHES / name, INPUTS / name)
    shutil.copy(RECORDS, INPUTS / "every.gslr")
    run = lambda *words: subprocess.run([PROGRAMS / words[0], *words[1:]], cwd=INPUTS, check=True, stdout=subprocess.DEVNULL)
    run("gsl-sweep", "bolt.stl", "bracket.stl", "-d", "-z", "--output", "made.glb")
    run("gsl-model", "every.gslr", "convert", "made.gslm")
    for command in COMMANDS:
        with Place(command, old=False) as place:
            began = time.monotonic()
            process = place.start()
            error = process.communicate(timeout=LIMIT)[1]
            SECONDS[command] = time.monotonic() - began
            WHOLE[command] = place.left()
            assert process.returncode == command.status, (str(command), process.returncode, error)
            assert sorted(WHOLE[command]) == sorted(command.outputs), (str(command), sorted(WHOLE[command]))


def tearDownModule():
    shutil.rmtree(INPUTS)


def processes_of(session):
    """Returns the processes of a session that run, apart from its own ends."""
    found = []
    for folder in Path("/proc").glob("[0-9]*"):
        try:
            words = (folder / "stat").read_text().rpartition(")")[2].split()
        except OSError:  # it has ended meanwhile
            continue
        if int(words[3]) == session and words[0] != "Z":
            found.append(int(folder.name))
    return found


class Faults(unittest.TestCase):
    def expect_whole(self, place, allowed=()):
        """Each output is whole, old or absent, and nothing else is left."""
        for name, data in place.left().items():
            if any(name.startswith(start) for start in allowed):
                continue
            self.assertIn(name, place.command.outputs, f"{place.command}: it is left behind")
            self.assertTrue(data == WHOLE[place.command][name] or (place.old and data == OLD),
                            f"{place.command}: {name} has {len(data)} bytes, and {len(WHOLE[place.command][name])} if it is whole")
        if place.old:
            self.assertEqual(sorted(set(place.command.outputs) - set(place.left())), [], f"{place.command}: the old file is lost")
        self.assertEqual(list(place.scratch.iterdir()), [], str(place.command))

    def expect_alone(self, process, command):
        """No helper program outlives its parent for long."""
        end = time.monotonic() + 10
        while processes_of(process.pid):
            self.assertLess(time.monotonic(), end, f"{command}: a process is left behind")
            time.sleep(0.01)

    def expect_one_line(self, command, error):
        lines = error.decode().splitlines()
        self.assertEqual(len(lines), 1, f"{command}: {error}")
        self.assertTrue(lines[0].startswith(command.words[0] + ": "), f"{command}: {error}")

    def expect_failure_or_answer(self, place, process, error, context):
        """The program answers as without the fault, or ends with a line and status 4."""
        command = place.command
        imports = "made.glb" in command.inputs  # a program of its own reads it, which may fail too
        self.assertIn(process.returncode, (command.status, 3, 4) if imports else (command.status, 4), f"{command}: {context}: {error}")
        if process.returncode != command.status:
            self.expect_one_line(command, error)
        else:
            left = place.left()
            for name in command.outputs:
                self.assertEqual(left.get(name), WHOLE[command][name], f"{command}: {context}: {name}")
        self.expect_whole(place)

    def each(self):
        for command in COMMANDS:
            for k in range(COUNT):
                with Place(command, old=k % 2 == 1) as place:
                    yield command, k, place


class Signals(Faults):
    def end_at_random(self, place, rng, sent):
        process = place.start()
        time.sleep(rng.uniform(0.0, 1.1 * SECONDS[place.command]))
        process.send_signal(sent)
        error = process.communicate(timeout=LIMIT)[1]
        self.assertIn(process.returncode, (-sent, place.command.status), f"{place.command}: {error}")
        self.assertEqual(error, b"", str(place.command))
        self.expect_alone(process, place.command)
        return process.returncode == -sent

    def test_a_signal_leaves_nothing(self):
        rng = random.Random(19)
        ended = sum(self.end_at_random_whole(place, rng, SIGNALS[k % len(SIGNALS)]) for _, k, place in self.each())
        self.assertGreater(ended, 0, "no signal came in time")

    def end_at_random_whole(self, place, rng, sent):
        ended = self.end_at_random(place, rng, sent)
        self.expect_whole(place)
        return ended

    def test_a_kill_leaves_whole_files(self):
        rng = random.Random(20)
        for _, _, place in self.each():
            self.end_at_random(place, rng, signal.SIGKILL)
            # Nothing can remove the temporary file then.
            self.expect_whole(place, allowed=[dot + name + "." for name in place.command.outputs for dot in ("", ".")])


class Limits(Faults):
    def test_memory(self):
        rng = random.Random(21)
        enough = {command: self.memory_that_is_enough(command) for command in COMMANDS}
        # The system and the C++ runtime need some before the program can say a word.
        beginning = {name: self.memory_that_is_enough(Command(f"{name} --version", [], [])) + (1 << 20)
                     for name in {command.words[0] for command in COMMANDS}}
        refused = 0
        for command, k, place in self.each():
            least = beginning[command.words[0]]
            most = max(least, enough[command])
            size = int(least + (most - least) * (k + rng.random()) / COUNT)
            process = place.start(limits=[(resource.RLIMIT_AS, size)])
            error = process.communicate(timeout=LIMIT)[1]
            self.expect_failure_or_answer(place, process, error, f"{size} bytes")
            refused += process.returncode == 4
        self.assertGreater(refused, 0, "no limit was too low")

    def memory_that_is_enough(self, command):
        """Returns a limit within which the command answers, to a twentieth."""
        size = 4 << 20
        while True:
            with Place(command, old=False) as place:
                process = place.start(limits=[(resource.RLIMIT_AS, size)])
                process.communicate(timeout=LIMIT)
                if process.returncode == command.status:
                    return size
            size += size // 20

    def test_size_of_files(self):
        rng = random.Random(22)
        for command, k, place in self.each():
            largest = max(len(data) for data in WHOLE[command].values())
            size = 0 if k == 0 else rng.randrange(largest)
            process = place.start(limits=[(resource.RLIMIT_FSIZE, size)])
            error = process.communicate(timeout=LIMIT)[1]
            self.assertEqual(process.returncode, 4, f"{command}: {size} bytes: {error}")
            self.expect_one_line(command, error)
            self.expect_whole(place)

    def test_time(self):
        for old in (False, True):
            long = Command("gsl-sweep bolt.stl bracket.stl --sphere 100000 --picture a.png --view a.html", ["a.png", "a.html"])
            WHOLE[long] = {"a.png": OLD, "a.html": OLD}  # it never ends
            with Place(long, old) as place:
                process = place.start(limits=[(resource.RLIMIT_CPU, (1, 60))])
                process.communicate(timeout=LIMIT)
                self.assertEqual(process.returncode, -signal.SIGXCPU)
                self.expect_whole(place)

    def test_number_of_files(self):
        for command in COMMANDS:
            for count in range(3, 12):
                with Place(command, old=count % 2 == 0) as place:
                    process = place.start(limits=[(resource.RLIMIT_NOFILE, count)])
                    error = process.communicate(timeout=LIMIT)[1]
                    if process.returncode == 127:
                        continue  # no file is left for the libraries
                    self.assertIn(process.returncode, (command.status, 3, 4), f"{command}: {count} files: {error}")
                    if process.returncode != command.status:
                        self.expect_one_line(command, error)
                    self.expect_whole(place)


class Streams(Faults):
    def test_closed(self):
        for command in COMMANDS:
            for closed in ((0,), (1,), (2,), (0, 1), (0, 2), (1, 2), (0, 1, 2)):
                with Place(command, old=False) as place:
                    process = place.start(closed=closed)
                    error = process.communicate(timeout=LIMIT)[1]
                    expected = (command.status, 4) if 1 in closed else (command.status,)
                    self.assertIn(process.returncode, expected, f"{command}: {closed}: {error}")
                    if process.returncode == 4 and 2 not in closed:
                        self.expect_one_line(command, error)
                    self.expect_whole(place)

    def test_full(self):
        for command in COMMANDS:
            for stream in ("stdout", "stderr"):
                with Place(command, old=False) as place, open("/dev/full", "wb") as full:
                    process = place.start(**{stream: full})
                    process.communicate(timeout=LIMIT)
                    self.assertIn(process.returncode, (command.status, 4), f"{command}: {stream}")
                    self.expect_whole(place)


class Disk(Faults):
    def test_full(self):
        folder = Path(os.environ["GSL_DISK"]) if "GSL_DISK" in os.environ else self.mounted()
        if folder is None:
            print("no small file system can be mounted: no disk is full")
            return
        for command in COMMANDS:
            with Place(command, old=True, parent=folder) as place:
                filler = folder / "filler"
                self.fill(filler)
                process = place.start()
                error = process.communicate(timeout=LIMIT)[1]
                self.assertEqual(process.returncode, 4, f"{command}: {error}")
                self.expect_one_line(command, error)
                self.expect_whole(place)
                filler.unlink()

    def fill(self, path):
        file = os.open(path, os.O_WRONLY | os.O_CREAT, 0o600)
        try:
            while os.write(file, bytes(4096)) > 0:
                pass
        except OSError as error:
            self.assertEqual(error.errno, errno.ENOSPC)
        finally:
            os.close(file)

    def mounted(self):
        """Returns a folder on a file system of its own that is visible to this process alone, or None."""
        library = ctypes.CDLL(None, use_errno=True)
        new_namespace, private = 0x00020000, (1 << 14) | (1 << 18)
        if library.unshare(new_namespace) != 0 or library.mount(b"none", b"/", None, private, None) != 0:
            return None
        folder = tempfile.mkdtemp(prefix="disk-")
        self.addCleanup(shutil.rmtree, folder, ignore_errors=True)
        if library.mount(b"tmpfs", folder.encode(), b"tmpfs", 0, b"size=1m") != 0:
            return None
        self.addCleanup(library.umount2, folder.encode(), 2)
        return Path(folder)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[4:]])
