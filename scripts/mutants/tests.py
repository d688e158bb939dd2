"""Runs tests on mutants: which test reaches which mutant, and which mutant makes a test fail."""

import collections
import json
import os
import pathlib
import resource
import shutil
import signal
import subprocess
import tempfile
import time
from concurrent.futures import ThreadPoolExecutor
from dataclasses import dataclass, field

import tree

# A mutant may ask for all memory, or write without an end.
MEMORY, FILE = 8 << 30, 1 << 30
# A test that takes this many times its time on the original, and a second, does not end.
PATIENCE = 10
# The length of a filter that is passed to a program.
LONGEST_FILTER = 90000
FILTER = "--gtest_filter="


@dataclass
class Test:
    """A test as ctest lists it."""
    name: str
    command: list
    folder: str
    environment: dict
    seconds: float = 0.0
    reached: list = field(default_factory=list)

    @property
    def case(self):
        """The name of a case of a GoogleTest program, or None."""
        return next((word[len(FILTER):] for word in self.command if word.startswith(FILTER)), None)

    @property
    def program(self):
        return self.command[0]


@dataclass
class Batch:
    """Tests that one process runs."""
    tests: list

    @property
    def command(self):
        if self.tests[0].case is None:
            return self.tests[0].command
        rest = [word for word in self.tests[0].command if not word.startswith(FILTER)]
        return [*rest, FILTER + ":".join(test.case for test in self.tests), "--gtest_fail_fast"]

    @property
    def limit(self):
        return PATIENCE * sum(test.seconds for test in self.tests) + 1.0


def listed(build, programs):
    """Returns the tests of these programs, in the order of the programs. None stands for all of them."""
    answer = subprocess.run(["ctest", "--test-dir", str(build), "--show-only=json-v1"], capture_output=True, text=True,
                            check=False)
    if answer.returncode != 0:
        raise tree.Failed(f"ctest does not list the tests:\n{answer.stderr[-2000:]}")
    tests = []
    for entry in json.loads(answer.stdout)["tests"]:
        command, known = entry.get("command", []), {item["name"]: item["value"] for item in entry.get("properties", [])}
        if not command or known.get("DISABLED") or not pathlib.Path(command[0]).exists():
            continue
        if programs is None or pathlib.Path(command[0]).name in programs:
            tests.append(Test(entry["name"], command, known.get("WORKING_DIRECTORY", str(build)),
                              dict(item.split("=", 1) for item in known.get("ENVIRONMENT", []))))
    if programs is not None:
        missing = [name for name in programs if not any(pathlib.Path(test.program).name == name for test in tests)]
        if missing:
            raise tree.Failed(f"there are no tests of {', '.join(missing)}")
        tests.sort(key=lambda test: programs.index(pathlib.Path(test.program).name))
    return tests


def limits():
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
    resource.setrlimit(resource.RLIMIT_FSIZE, (FILE, FILE))
    signal.signal(signal.SIGXFSZ, signal.SIG_IGN)  # a test may try a larger file, and gets an error
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def run(command, folder, environment, limit):
    """Returns how the command ended, "" when it passed, with its output and its seconds. Its temporary files and its
    children end with it."""
    scratch = tempfile.mkdtemp(prefix="mutant-")
    os.chmod(scratch, 0o755)  # a test becomes another user
    start = time.monotonic()
    with tempfile.TemporaryFile() as said:
        process = subprocess.Popen(command, cwd=folder, env={**os.environ, **environment, "TMPDIR": scratch},
                                   stdin=subprocess.DEVNULL, stdout=said, stderr=subprocess.STDOUT,
                                   start_new_session=True, preexec_fn=limits)
        try:
            status = process.wait(limit)
            end = "" if status == 0 else "failed" if status > 0 else f"ended by {signal.Signals(-status).name}"
        except subprocess.TimeoutExpired:
            end = f"ran longer than {limit:.1f} s"
        try:
            os.killpg(process.pid, signal.SIGKILL)
        except ProcessLookupError:
            pass
        process.wait()
        said.seek(0)
        output = said.read()
    shutil.rmtree(scratch, ignore_errors=True)
    return end, output[-20000:].decode(errors="replace"), time.monotonic() - start


def reach(tests, count, jobs, longest=None):
    """Runs each test once on the original. Notes its time and what it reaches; returns the tests that pass within
    `longest` seconds, and the names of the slow ones."""
    def one(test):
        with tempfile.NamedTemporaryFile() as reached:
            reached.truncate(count + 1)
            end, output, test.seconds = run(test.command, test.folder,
                                            {**test.environment, "GSL_MUTANTS_REACHED": reached.name}, 1800.0)
            if end:
                raise tree.Failed(f"{test.name} fails without a mutant ({end}):\n{output[-3000:]}")
            data = pathlib.Path(reached.name).read_bytes()
            test.reached = [number for number, byte in enumerate(data) if byte]
        return test

    with ThreadPoolExecutor(jobs) as pool:
        done = list(pool.map(one, tests))
    slow = [test.name for test in done if longest is not None and test.seconds > longest]
    return [test for test in done if test.name not in set(slow)], slow


def reaching(tests):
    """Returns the tests that reach each number."""
    found = collections.defaultdict(list)
    for test in tests:
        for number in test.reached:
            found[number].append(test)
    return found


def batches(tests):
    """Returns the tests in groups, the fastest first. A group is run by one process, and its tests take about as
    long as each other."""
    levels = collections.defaultdict(list)
    for order, test in enumerate(tests):
        level = 0
        while test.seconds > 0.1 * 4 ** level:
            level += 1
        levels[level, test.program, order if test.case is None else -1].append(test)
    first = {}
    for order, test in enumerate(tests):
        first.setdefault(test.program, order)
    groups = []
    for level, program, order in sorted(levels, key=lambda key: (key[0], first[key[1]], key[2])):
        length = 0
        groups.append([])
        for test in levels[level, program, order]:
            length += len(test.case or "") + 1
            if length > LONGEST_FILTER:
                groups.append([])
                length = len(test.case) + 1
            groups[-1].append(test)
    return [Batch(group) for group in groups]


def judge(number, found, said=None):
    """Runs the tests that reach a mutant until one fails. Returns what became of it, and how."""
    if not found:
        return "not reached", ""
    for batch in batches(found):
        environment = {**batch.tests[0].environment, "GSL_MUTANT": str(number)}
        end, output, _ = run(batch.command, batch.tests[0].folder, environment, batch.limit)
        if said is not None:
            said(batch, end, output)
        if end:
            return "killed", f"{pathlib.Path(batch.tests[0].program).name} {end}"
    return "survived", f"{len(found)} tests"
