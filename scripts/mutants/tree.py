"""Makes a copy of the tree that holds mutants, and builds its tests."""

import collections
import hashlib
import json
import os
import pathlib
import re
import shlex
import shutil
import subprocess
from concurrent.futures import ThreadPoolExecutor
from dataclasses import asdict, dataclass

import places
import schemata

# Loops without an effect must not be taken to end, as a mutant may never end. Each mutant adds a branch; where functions
# with hundreds of them are inlined, and these passes run, one kernel takes gcc a quarter of an hour instead of a second.
FLAGS = ("-O1 -DNDEBUG -w -fno-finite-loops -fno-inline -fno-tree-dominator-opts -fno-tree-pre -fno-tree-fre "
         "-Dalways_inline=unused")
# A table that the compiler computes takes many more steps with mutants in it.
STEPS = "-fconstexpr-steps=100000000"
# A compiler refuses a place for reasons that the tree does not show; each round leaves out what it refuses.
ROUNDS = 20


class Failed(Exception):
    """Ends the program with a message."""


@dataclass(frozen=True)
class Mutant:
    """A mutant by what a reader sees of it. These words also find it after its line has moved."""
    file: str
    line: int
    function: str
    kind: str
    was: str
    now: str

    @property
    def key(self):
        return self.file, self.function, self.was, self.now


def digest(*texts):
    value = hashlib.sha256()
    for text in texts:
        value.update(text if isinstance(text, bytes) else str(text).encode())
        value.update(b"\0")
    return value.hexdigest()


def own_version():
    folder = pathlib.Path(__file__).parent
    return digest(*((folder / name).read_bytes() for name in ("places.py", "schemata.py")))


class Tree:
    """The sources below `root`, their copy with mutants, and its build."""

    def __init__(self, root, out, jobs, options=()):
        self.root, self.out, self.jobs = pathlib.Path(root).resolve(), pathlib.Path(out).resolve(), jobs
        self.copy, self.build, self.header = self.out / "tree", self.out / "build", self.out / "Mutants.h"
        self.options = list(options)
        self.out.mkdir(parents=True, exist_ok=True)
        self.write(self.header, schemata.HEADER)
        self.found = {}

    @staticmethod
    def write(path, text, encoding="latin-1"):
        """Writes a file unless it has that text, so that nothing is compiled in vain."""
        data = text if isinstance(text, bytes) else text.encode(encoding)
        if not path.exists() or path.read_bytes() != data:
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_bytes(data)

    def files(self):
        """Returns the names of all files of the tree that are or may be committed."""
        if (self.root / ".git").exists():
            run = subprocess.run(["git", "-C", str(self.root), "ls-files", "-co", "--exclude-standard", "-z"],
                                 capture_output=True, text=True, check=True)
            names = run.stdout.split("\0")
        else:
            names = [path.relative_to(self.root).as_posix() for path in self.root.rglob("*")]
        return sorted(name for name in names if name and (self.root / name).is_file()
                      and self.out not in (self.root / name).parents)

    def synchronise(self, changed=None):
        """Makes the copy the same as the tree, except for the files that `changed` has."""
        changed = changed or {}
        names = self.files()
        for name in names:
            target = self.copy / name
            self.write(target, changed.get(name, (self.root / name).read_bytes()))
            shutil.copymode(self.root / name, target)
        for path in list(self.copy.rglob("*")):
            if path.is_file() and path.relative_to(self.copy).as_posix() not in set(names):
                path.unlink()

    def configure(self):
        if not (self.build / "compile_commands.json").exists():
            if not self.copy.exists():
                self.synchronise()
            launcher = os.environ.get("CMAKE_CXX_COMPILER_LAUNCHER")
            self.checked(["cmake", "-S", str(self.copy), "-B", str(self.build), "-G", "Ninja",
                          "-D", "CMAKE_BUILD_TYPE=RelWithDebInfo", "-D", f"CMAKE_CXX_FLAGS_RELWITHDEBINFO={FLAGS}",
                          "-D", "CMAKE_EXPORT_COMPILE_COMMANDS=ON", *self.options,
                          *(["-D", f"CMAKE_CXX_COMPILER_LAUNCHER={launcher}"] if launcher else [])])

    @staticmethod
    def checked(command):
        run = subprocess.run(command, capture_output=True, text=True, check=False)
        if run.returncode != 0:
            raise Failed(f"{shlex.join(command)} failed:\n{(run.stdout + run.stderr)[-4000:]}")
        return run.stdout

    # What can be changed.

    def commands(self):
        """Returns the flags that matter to the parser, by the name of each source file."""
        flags = {}
        for entry in json.loads((self.build / "compile_commands.json").read_text()):
            name = pathlib.Path(entry["file"])
            if self.copy not in name.parents:
                continue
            words = [word.replace(str(self.copy), str(self.root)) for word in shlex.split(entry["command"])]
            kept = [word for word in words if re.match(r"-[ID]|-std|-ffp|-isystem|-m", word)]
            flags[name.relative_to(self.copy).as_posix()] = kept
        return flags

    @staticmethod
    def flags_of(name, commands):
        """Returns the flags of a source, or of the source whose folder is nearest to a header."""
        if name in commands:
            return commands[name]
        folder = name.split("/")[:-1]

        def nearness(other):
            own = other.split("/")[:-1]
            return len(os.path.commonprefix([own, folder])), -len(own), other

        return commands[max(commands, key=nearness)]

    def find(self, names):
        """Finds the places of these files that the parser accepts. What was found before is kept."""
        commands, version = self.commands(), own_version()

        def one(name):
            flags = self.flags_of(name, commands)
            kept = self.out / "places" / f"{digest(version, name, (self.root / name).read_bytes(), *flags)}.json"
            if not kept.exists():
                self.write(kept, json.dumps(self.accepted(name, flags)))
            return json.loads(kept.read_text())

        with ThreadPoolExecutor(self.jobs) as pool:
            for name, answer in zip(names, pool.map(one, names)):
                found = places.Found([places.Place(**place) for place in answer["places"]],
                                     collections.Counter(answer["skipped"]), answer["errors"])
                self.found[name] = found
        return self.found

    def accepted(self, name, flags):
        """Returns the places of a file without the mutants that clang does not compile."""
        flags = [*flags, "-iquote", str((self.root / name).parent)]
        found = places.find(self.root / name, flags)
        text = (self.root / name).read_text(encoding="latin-1")
        kept = list(found.places)
        for _ in range(ROUNDS):
            source = schemata.instrumented(text, list(enumerate(kept, 1)), self.header, name)
            run = subprocess.run(["clang++", "-fsyntax-only", "-w", "-Wno-c++11-narrowing", "-ferror-limit=0",
                                  "-fno-caret-diagnostics", STEPS, *flags, "-x", "c++", "-"], input=source,
                                 capture_output=True, encoding="latin-1", check=False)
            blamed = schemata.to_blame(source, name, run.stderr) if kept else set()
            if not blamed:
                break
            found.skipped["does not compile"] += len(blamed)
            kept = [place for number, place in enumerate(kept, 1) if number not in blamed]
        return {"places": [asdict(place) for place in kept], "skipped": found.skipped,
                "errors": run.stderr[-2000:] if run.returncode else ""}

    def mutants(self):
        """Returns (mutant, place) of all that was found, in the order of the files."""
        return [(Mutant(name, place.line, place.function, place.kind, place.was, place.now), place)
                for name in sorted(self.found) for place in self.found[name].places]

    # The build with the mutants in it.

    def make(self, chosen, targets):
        """Builds the tests with the chosen (mutant, place) in them. Returns a list of those that compile; the number
        of a mutant is its place in the list, from 1."""
        chosen = list(chosen)
        for _ in range(ROUNDS):
            sources = self.sources(chosen)
            self.synchronise(sources)
            run = subprocess.run(["cmake", "--build", str(self.build), "--parallel", str(self.jobs), "--target",
                                  *targets, "--", "-k", "0"], capture_output=True, encoding="latin-1", check=False)
            if run.returncode == 0:
                return chosen
            blamed = set()
            for name, source in sources.items():
                blamed |= schemata.to_blame(source, str(self.copy / name), run.stdout + run.stderr)
            if not blamed:
                raise Failed(f"the build failed:\n{(run.stdout + run.stderr)[-6000:]}")
            for number in blamed:
                self.found[chosen[number - 1][0].file].skipped["does not compile"] += 1
            chosen = [mutant for number, mutant in enumerate(chosen, 1) if number not in blamed]
        raise Failed(f"the mutants do not compile after {ROUNDS} rounds")

    def sources(self, chosen):
        numbers = collections.defaultdict(list)
        for number, (mutant, place) in enumerate(chosen, 1):
            numbers[mutant.file].append((number, place))
        return {name: schemata.instrumented((self.root / name).read_text(encoding="latin-1"), mutants, self.header,
                                            str(self.copy / name)) for name, mutants in numbers.items()}
