"""Tests the tests: changes the sources in many small ways, and says which changes no test notices.

Started by scripts/mutate.
"""

import argparse
import collections
import json
import os
import pathlib
import re
import sys
import threading
import time
from concurrent.futures import ThreadPoolExecutor
from dataclasses import asdict, dataclass, field

import tests
import tree
from tree import Failed, digest

# Every mutant of these is run.
WHOLE = ["exact/", "gsl/impl/kernel/", "sweep/PairKernel.cpp", "sweep/PairKernel.h"]
# The parts that --sample takes its mutants from: one of them, which the sources choose. Their survivors were judged one
# by one, so that a new survivor is a test that is missing, and their test programs are built and run in a minute. The
# kernels were judged too, but theirs take five.
HELD = [["exact/"]]
# A sample of so many is run of the rest.
SAMPLED, SAMPLE = ["gsl/", "mesh/", "model/", "records/", "sweep/"], 2000
# The programs whose tests are run for a folder; those that test it most directly come first. The longest name counts.
PROGRAMS = {
    "exact/": ["exact_tests"],
    "gsl/": ["gsl_impl_tests", "gsl_geometry_tests", "gsl_kernel_tests", "gsl_datum_tests", "gsl_enum_tests",
             "gsl_solver_tests", "gsl_batch_tests", "gsl_persist_tests", "gsl_persist_hostile_tests",
             "gsl_aliasing_tests", "gsl_allocation_tests", "gsl_memory_tests", "gsl_golden_tests",
             "gsl_thread_tests", "gsl_entity_reference_tests", "gsl_sweep_reference_tests",
             "gsl_in_plane_reference_tests"],
    "gsl/host/": ["host_core_tests", "host_object_tests", "host_persist_tests", "host_object_threads_tests",
                  "gsl_persist_tests", "gsl_memory_tests", "gsl_impl_tests"],
    "gsl/impl/kernel/": ["gsl_kernel_tests", "gsl_geometry_tests", "gsl_datum_tests", "gsl_impl_tests",
                         "gsl_entity_reference_tests", "gsl_in_plane_reference_tests", "gsl_sweep_reference_tests",
                         "gsl_batch_tests"],
    "gsl/impl/wide/": ["gsl_solver_tests", "gsl_batch_tests", "gsl_golden_tests"],
    "mesh/": ["mesh_tests", "mesh_without_assimp_tests", "mesh_calls_tests", "mesh_memory_tests"],
    "model/": ["model_tests", "model_memory_tests"],
    "records/": ["records_tests", "records_calls_tests", "records_memory_tests", "host_persist_tests"],
    "sweep/": ["sweep_tests", "sweep_golden_tests", "sweep_memory_tests"],
    "sweep/PairKernel.": ["sweep_tests", "sweep_golden_tests"],
}
OPTIONS = ["-D", "GSL_WERROR=OFF", "-D", "GSL_PYTHON=OFF", "-D", "GSL_BUILD_EXAMPLES=OFF"]
STATES = ["killed", "survived", "equivalent", "not reached"]
ENTRY = ["file", "function", "was", "now", "why"]


@dataclass
class Layout:
    """What is changed, and what tests it. The tests of this program have another one."""
    root: pathlib.Path
    out: pathlib.Path
    equivalent: pathlib.Path
    whole: list = field(default_factory=lambda: list(WHOLE))
    held: list = field(default_factory=lambda: list(HELD))
    sampled: list = field(default_factory=lambda: list(SAMPLED))
    programs: dict = field(default_factory=lambda: dict(PROGRAMS))
    options: list = field(default_factory=lambda: list(OPTIONS))

    def programs_for(self, names):
        """Returns the programs that test these files, each once."""
        found = {}
        for name in names:
            folders = [folder for folder in self.programs if name.startswith(folder)]
            if not folders:
                raise Failed(f"no test program is known for {name}")
            found.update(dict.fromkeys(self.programs[max(folders, key=len)]))
        return list(found)


def sources(made, starts):
    return [name for name in made.files() if re.search(r"\.(h|cpp)$", name)
            and any(name == start or name.startswith(start.rstrip("/") + "/") for start in starts)]


def read_equivalent(path):
    """Reads the mutants that no test can notice. An entry has lines such as `file: ...`, and a `now:` for each mutant
    that its reason holds for."""
    entries = {}
    text = re.sub(r"^#.*\n", "", path.read_text(), flags=re.MULTILINE).strip() if path.exists() else ""
    for block in re.split(r"\n\s*\n", text) if text else []:
        pairs = [(key, value.strip()) for key, _, value in (line.partition(":") for line in block.splitlines())]
        names = [key for key, _ in pairs]
        if [*dict.fromkeys(names)] != ENTRY or len(names) - names.count("now") != 4 or not all(v for _, v in pairs):
            raise Failed(f"{path.name}: an entry has the lines {', '.join(ENTRY)}, each with a text:\n{block}")
        values = dict(pairs)
        for now in (value for key, value in pairs if key == "now"):
            entries[values["file"], values["function"], values["was"], now] = values["why"]
    return entries


def by_hash(made, mutants):
    """Returns the mutants in an order that only the sources decide."""
    names = sorted({mutant.file for mutant, _ in mutants})
    seed = digest(*((made.root / name).read_bytes() for name in names))
    return sorted(mutants, key=lambda item: digest(seed, *item[0].key, item[1].begin, item[1].text))


def held(made, layout):
    """Returns the sources of the part that a sample is taken from, which the sources decide."""
    parts = [sources(made, starts) for starts in layout.held]
    seed = digest(*((made.root / name).read_bytes() for names in parts for name in names))
    return min(parts, key=lambda names: digest(seed, *names))


def select(made, layout, wanted):
    """Returns the (mutant, place) that the command line asks for, in the order of the files."""
    if wanted.files:
        names = sources(made, wanted.files)
        if not names:
            raise Failed(f"no source is called {', '.join(wanted.files)}")
        made.find(names)
        return made.mutants()
    whole = sources(made, layout.whole)
    chosen = []
    if not wanted.rest:
        made.find(held(made, layout) if wanted.sample else whole)
        chosen = made.mutants()
    if wanted.sample:
        chosen = by_hash(made, chosen)[:wanted.sample]
    else:
        rest = [name for name in sources(made, layout.sampled) if name not in whole]
        if rest:
            made.find(rest)
            others = [item for item in made.mutants() if item[0].file in set(rest)]
            chosen += by_hash(made, others)[:wanted.rest or SAMPLE]
    return sorted(chosen, key=lambda item: (item[0].file, item[1].begin, -item[1].end, item[1].text))


class Results:
    """What became of each mutant, in a file that grows while they run."""

    def __init__(self, path, plan):
        self.path, self.plan, self.states, self.lock = path, plan, {}, threading.Lock()

    def resume(self):
        """Reads what a run on the same build has found."""
        if self.path.exists():
            first, *lines = self.path.read_text().splitlines() or [""]
            if first == self.plan:
                self.states = {int(number): (state, how) for number, state, how in
                               (line.split("\t", 2) for line in lines if line.count("\t") == 2)}

    def start(self):
        lines = [f"{number}\t{state}\t{how}" for number, (state, how) in self.states.items()]
        self.path.write_text("\n".join([self.plan, *lines]) + "\n")

    def note(self, number, state, how):
        with self.lock:
            self.states[number] = (state, how)
            with open(self.path, "a", encoding="utf-8") as file:
                file.write(f"{number}\t{state}\t{how}\n")


def folder_of(name, layout):
    """Returns the row of the table that a file counts in."""
    if name in layout.whole:
        return name
    return max((start for start in layout.whole + layout.sampled if name.startswith(start)), key=len,
               default=os.path.dirname(name) + "/")


def table(layout, made, chosen, states):
    """Returns the counts of each folder as lines."""
    counts = collections.defaultdict(collections.Counter)
    for number, mutant in enumerate(chosen, 1):
        counts[folder_of(mutant.file, layout)][states.get(number, ("left", ""))[0]] += 1
    for name in {mutant.file for mutant in chosen}:
        for reason, count in made.found[name].skipped.items() if name in made.found else []:
            counts[folder_of(name, layout)]["skipped"] += count
            counts["skipped", reason]["skipped"] += count
    rows = [row for row in counts if isinstance(row, str)]
    lines = ["{:24}{:>8}{:>8}{:>9}{:>11}{:>12}{:>8}".format("", "mutants", *STATES, "skipped")]
    for row in sorted(rows) + (["all"] if len(rows) > 1 else []):
        count = counts[row] if row != "all" else sum((counts[other] for other in rows), collections.Counter())
        total = sum(value for state, value in count.items() if state != "skipped")
        lines.append("{:24}{:>8}{:>8}{:>9}{:>11}{:>12}{:>8}".format(
            row, total, *(count[state] for state in STATES), count["skipped"]))
    reasons = sorted((count["skipped"], row[1]) for row, count in counts.items() if isinstance(row, tuple))
    if reasons:
        lines.append("not changed: " + ", ".join(f"{count} {reason}" for count, reason in reversed(reasons)))
    return lines


def described(number, mutant, how=""):
    return (f"{mutant.file}:{mutant.line}: {mutant.kind} in {mutant.function} (number {number})"
            f"{', ' + how if how else ''}\n  was: {mutant.was}\n  now: {mutant.now}")


def share(states):
    """Returns the part, in percent, of the mutants not listed as equivalent that died."""
    judged = [state for state, _ in states.values() if state != "equivalent"]
    return 100.0 * judged.count("killed") / len(judged) if judged else 100.0


def stale(made, equivalent):
    """Returns the entries whose file was read and has no such mutant."""
    known = {mutant.key for mutant, _ in made.mutants()}
    return [key for key in equivalent if key[0] in made.found and key not in known]


class Session:
    """One run: a selection, its build, its tests."""

    def __init__(self, layout, wanted, say=print):
        self.layout, self.wanted, self.say = layout, wanted, say
        self.made = tree.Tree(layout.root, layout.out, wanted.jobs, layout.options)
        self.plan_file, self.reach_file = layout.out / "plan.json", layout.out / "reach.json"
        self.equivalent = read_equivalent(layout.equivalent)

    def list(self):
        self.made.configure()
        chosen = select(self.made, self.layout, self.wanted)
        for number, (mutant, _) in enumerate(chosen, 1):
            listed = self.equivalent.get(mutant.key)
            self.say(described(number, mutant, f"equivalent: {listed}" if listed else ""))
        for line in table(self.layout, self.made, [mutant for mutant, _ in chosen], {})[1:]:
            self.say(line)
        return 0

    def prepare(self):
        """Builds the mutants, and finds the tests that reach each of them."""
        self.made.configure()
        chosen = select(self.made, self.layout, self.wanted)
        unread = {name: found.errors for name, found in self.made.found.items() if found.errors}
        for name, errors in unread.items():
            self.say(f"left out: {name} cannot be read alone: {errors.strip().splitlines()[0]}")
        chosen = [item for item in chosen if item[0].file not in unread]
        if not chosen:
            raise Failed("there is no mutant to run")
        programs = self.layout.programs_for([mutant.file for mutant, _ in chosen])
        self.say(f"{len(chosen)} mutants; building {', '.join(programs)}")
        chosen = self.made.make(chosen, programs)
        start = time.monotonic()
        running, slow = tests.reach(tests.listed(self.made.build, programs), len(chosen), self.wanted.jobs,
                                    self.wanted.longest)
        self.say(f"{len(running)} tests pass without a mutant ({time.monotonic() - start:.0f} s)")
        if slow:
            self.say(f"left out, as they take longer than {self.wanted.longest} s: {', '.join(slow)}")
        mutants = [mutant for mutant, _ in chosen]
        skipped = {name: found.skipped for name, found in self.made.found.items()}
        self.plan_file.write_text(json.dumps({"mutants": [asdict(mutant) for mutant in mutants], "skipped": skipped}))
        self.reach_file.write_text(json.dumps([asdict(test) for test in running]))
        return mutants, running

    def prepared(self):
        """Returns the mutants and the tests of the last build."""
        if not self.plan_file.exists() or not self.reach_file.exists():
            raise Failed("nothing was built yet: run ./scripts/mutate with a file, --all, --sample or --rest first")
        plan = json.loads(self.plan_file.read_text())
        for name, skipped in plan["skipped"].items():
            self.made.found[name] = tree.places.Found([], collections.Counter(skipped))
        return ([tree.Mutant(**mutant) for mutant in plan["mutants"]],
                [tests.Test(**test) for test in json.loads(self.reach_file.read_text())])

    def run_one(self, number):
        mutants, running = self.prepared()
        if not 1 <= number <= len(mutants):
            raise Failed(f"the mutants of the last build have the numbers 1 to {len(mutants)} (got {number})")
        self.say(described(number, mutants[number - 1]))

        def said(batch, end, output):
            self.say(f"{pathlib.Path(batch.command[0]).name}: {len(batch.tests)} tests: {end or 'passed'}")
            if end:
                self.say(output)

        state, how = tests.judge(number, tests.reaching(running)[number], said)
        self.say(f"{state} ({how})" if how else state)
        return 0

    def run_all(self):
        mutants, running = self.prepared() if self.wanted.resume else self.prepare()
        results = Results(self.layout.out / "results.txt", digest(self.plan_file.read_bytes()))
        if self.wanted.resume:
            results.resume()
        results.states = {number: kept for number, kept in results.states.items() if kept[0] != "equivalent"
                          and mutants[number - 1].key not in self.equivalent}
        results.start()
        reaching = tests.reaching(running)
        for number, mutant in enumerate(mutants, 1):
            if mutant.key in self.equivalent:
                results.note(number, "equivalent", self.equivalent[mutant.key])
        left = [number for number in range(1, len(mutants) + 1) if number not in results.states]

        def one(number):
            results.note(number, *tests.judge(number, reaching[number]))
            if len(results.states) % 100 == 0:
                self.say(f"{len(results.states)} of {len(mutants)}: {share(results.states):.1f} % killed")

        for number in left:
            reaching[number] = reaching.get(number, [])
        with ThreadPoolExecutor(self.wanted.jobs) as pool:
            list(pool.map(one, left))
        return self.report(mutants, results.states)

    def report(self, mutants, states):
        for state in ("survived", "not reached"):
            for number, mutant in enumerate(mutants, 1):
                if states[number][0] == state:
                    self.say(f"{state}: {described(number, mutant, states[number][1])}")
        for line in table(self.layout, self.made, mutants, states):
            self.say(line)
        if not self.wanted.resume:
            for file, function, was, now in stale(self.made, self.equivalent):
                self.say(f"{self.layout.equivalent.name}: {file} has no such mutant in {function}: {was} -> {now}")
        killed = share(states)
        self.say(f"{killed:.1f} % of the mutants that are not listed as equivalent were killed")
        if self.wanted.at_least is not None and killed < self.wanted.at_least:
            self.say(f"at least {self.wanted.at_least} % was expected; {self.layout.equivalent.name} lists mutants "
                     "that no test can notice")
            return 1
        return 0


def parsed(arguments):
    parser = argparse.ArgumentParser(prog="mutate", description="Changes the sources in small ways and reports the "
                                     "changes that no test notices.")
    parser.add_argument("files", nargs="*", metavar="FILE", help="every mutant of this file, or of this folder")
    parser.add_argument("--all", action="store_true",
                        help=f"every mutant of {', '.join(WHOLE)}, and {SAMPLE} of the rest")
    parser.add_argument("--sample", type=int, metavar="N",
                        help="N mutants of the files whose survivors were judged, chosen by their contents")
    parser.add_argument("--rest", type=int, metavar="N",
                        help=f"N mutants of {', '.join(SAMPLED)} without those that --all runs whole")
    parser.add_argument("--list", action="store_true", help="list the mutants and build nothing")
    parser.add_argument("--run", type=int, metavar="NUMBER", help="run a mutant of the last build and show its tests")
    parser.add_argument("--continue", action="store_true", dest="resume", help="go on with the last build")
    parser.add_argument("--longest", type=float, metavar="SECONDS", help="leave out tests that take longer")
    parser.add_argument("--at-least", type=float, metavar="PERCENT", help="fail when fewer are killed")
    parser.add_argument("--jobs", type=int, default=int(os.environ.get("JOBS", os.cpu_count() or 1)), metavar="N",
                        help="run N processes")
    wanted = parser.parse_args(arguments)
    chosen = [bool(wanted.files), wanted.all, wanted.sample is not None, wanted.rest is not None,
              wanted.run is not None, wanted.resume]
    if sum(chosen) != 1:
        parser.error("name files, or one of --all, --sample, --rest, --run and --continue")
    for name in ("sample", "rest"):
        count = getattr(wanted, name)
        if count is not None and count < 1:
            parser.error(f"--{name} must be at least 1 (got {count})")
    return wanted


def main(arguments, layout, say=print):
    wanted = parsed(arguments)
    session = Session(layout, wanted, say)
    try:
        if wanted.list:
            return session.list()
        return session.run_one(wanted.run) if wanted.run is not None else session.run_all()
    except Failed as failure:
        print(f"mutate: {failure}", file=sys.stderr)
        return 2


if __name__ == "__main__":
    ROOT = pathlib.Path(__file__).resolve().parents[2]
    sys.exit(main(sys.argv[1:], Layout(ROOT, ROOT / "build" / "mutants",
                                       pathlib.Path(__file__).with_name("equivalent.txt")),
                  lambda text: print(text, flush=True)))
