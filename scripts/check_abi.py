#!/usr/bin/env python3
"""Compares the ABI of the shared libraries of a build with the record in abi/, by libabigail.

usage: check_abi.py [--write] BUILD

BUILD is a build folder whose libraries carry the debug information of their types, such as build/dev. Before the
comparison the check proves on a small library that it notices an added field, moved virtual slots and a removed
symbol. With --write the record is written instead.
"""

import pathlib
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as tree
from concurrent.futures import ThreadPoolExecutor

ROOT = pathlib.Path(__file__).resolve().parent.parent
LIBRARIES = {
    "libgsl_geometry": "gsl", "libgsl_host": "gsl/host", "libgsl_records": "records", "libgsl_model": "model",
    "libgsl_sweep": "sweep",
}
DUMP = [
    "abidw", "--drop-private-types", "--exported-interfaces-only", "--drop-undefined-syms", "--no-show-locs",
    "--no-corpus-path", "--no-comp-dir-path", "--no-parameter-names", "--no-write-default-sizes", "--no-elf-needed",
    "--type-id-style", "hash",
]
FOREIGN = ("std", "__gnu_cxx", "__cxxabiv1")
REFERENCES = ("type-id", "method-class-id", "naming-typedef-id", "def-of-decl-id")


def header_folders():
    folders = {header.parent for pattern in ("gsl/include/*.h", "gsl/host/*/*.h", "*/include/*.h")
               for header in ROOT.glob(pattern)}
    return sorted(folders)


def empty_foreign_classes(node, is_foreign=False):
    """Classes of the standard library keep their size alone."""
    is_foreign = is_foreign or node.tag == "namespace-decl" and node.get("name") in FOREIGN
    for child in node:
        empty_foreign_classes(child, is_foreign)
    if is_foreign and node.tag in ("class-decl", "union-decl"):
        for child in list(node):
            if not any(inner.get("id") for inner in child.iter()):
                node.remove(child)


def ids(node, names):
    return {inner.get(name) for inner in node.iter() for name in names if inner.get(name)}


def drop_unreachable(corpus):
    """Keeps the types that functions and variables lead to."""
    declared, entries = [], []

    def visit(node):
        for child in node:
            if child.tag == "namespace-decl":
                visit(child)
            elif child.tag in ("function-decl", "var-decl"):
                entries.append(child)
            else:
                declared.append((node, child))

    for unit in corpus.findall("abi-instr"):
        visit(unit)
    holders = {}
    for _, child in declared:
        for name in ids(child, ("id",)):
            holders.setdefault(name, []).append(child)
    # A class with a function that is exported counts, also when nothing refers to the class.
    used = [child for _, child in declared if any(inner.get("elf-symbol-id") for inner in child.iter())]
    reached = {id(child) for child in used}
    waiting = [*entries, *used]
    while waiting:
        for name in ids(waiting.pop(), REFERENCES):
            for child in holders.get(name, ()):
                if id(child) not in reached:
                    reached.add(id(child))
                    waiting.append(child)
    for parent, child in declared:
        if id(child) not in reached:
            parent.remove(child)


def drop_empty_scopes(node):
    for child in list(node):
        drop_empty_scopes(child)
        if child.tag in ("namespace-decl", "abi-instr", "member-type") and len(child) == 0:
            node.remove(child)


def dump(library, folders, out):
    """Writes what libabigail reads from a library, without paths and without the insides of the standard library."""
    with tempfile.NamedTemporaryFile(suffix=".abi") as whole:
        headers = [word for folder in folders for word in ("--headers-dir", folder)]
        subprocess.run([*DUMP, *headers, "--out-file", whole.name, library], check=True)
        corpus = tree.parse(whole.name)
    for unit in corpus.getroot().findall("abi-instr"):
        path = pathlib.Path(unit.get("path", ""))
        unit.set("path", str(path.relative_to(ROOT)) if path.is_relative_to(ROOT) else path.name)
        unit.attrib.pop("comp-dir-path", None)
    empty_foreign_classes(corpus.getroot())
    drop_unreachable(corpus.getroot())
    drop_empty_scopes(corpus.getroot())
    tree.indent(corpus, space="")
    corpus.write(out, encoding="unicode")
    if not corpus.getroot().findall(".//class-decl/data-member"):
        raise SystemExit(f"{library} has no debug information of its types; expected a build by gcc with the preset dev")


def difference(recorded, current):
    """Returns what abidiff reports; empty text means that nothing differs."""
    command = ["abidiff", "--harmless", "--no-show-locs", recorded, current]
    done = subprocess.run(command, check=False, capture_output=True, text=True)
    if done.returncode & 3 != 0:
        raise SystemExit(f"abidiff failed: {done.stdout}{done.stderr}")
    return done.stdout or "abidiff reports a change\n" if done.returncode else ""


# What is planted in a copy of the headers of records, and what the report then says.
PLANTED = {
    "a field": ("gsl_RecordField.h", "  std::int32_t index = -1;    ", "  std::int32_t index = -1, planted = 0; ",
                "int32_t planted"),
    "a slot": ("gsl_RecordWriter.h", "  virtual void Finish() = 0;", "", "Finish"),
    "a symbol": ("gsl_RecordWriter.h", "class GSL_RECORDS_API gsl_RecordWriter", "class gsl_RecordWriter", "gsl_RecordWriter"),
}


def dump_sample(folder, change=None):
    """Compiles two sources of records over a copy of their headers with a change, and returns the dump."""
    headers = folder / "include"
    headers.mkdir(parents=True)
    for header in (ROOT / "records/include").glob("*.h"):
        text = header.read_text()
        if change and header.name == change[0]:
            if change[1] not in text:
                raise SystemExit(f"{header} has no line '{change[1]}' any more; update PLANTED")
            text = text.replace(change[1], change[2], 1)
        (headers / header.name).write_text(text)
    sources = [ROOT / "records/gsl_RecordReader.cpp", ROOT / "records/gsl_RecordWriter.cpp"]
    library = folder / "libsample.so"
    flags = ["-std=c++17", "-g", "-fPIC", "-shared", "-fvisibility=hidden", f"-I{headers}"]
    subprocess.run(["g++", *flags, *sources, "-o", library], check=True)
    out = folder / "sample.abi"
    dump(library, [headers], out)
    return out


def unnoticed(folder):
    """Yields the planted changes that the comparison does not report."""
    variants = {"nothing": None, **PLANTED}
    with ThreadPoolExecutor() as pool:
        made = pool.map(lambda name: dump_sample(folder / name.replace(" ", "_"), variants[name]), variants)
        dumps = dict(zip(variants, made))
    again = difference(dumps["nothing"], dumps["nothing"])
    if again:
        yield f"the comparison reports a change where there is none:\n{again}"
    for name, (*_, word) in PLANTED.items():
        report = difference(dumps["nothing"], dumps[name])
        if word not in report:
            yield f"the comparison does not notice {name} that was changed on purpose:\n{report}"


def main():
    arguments = [argument for argument in sys.argv[1:] if argument != "--write"]
    if len(arguments) != 1:
        print(__doc__, file=sys.stderr)
        return 2
    build = pathlib.Path(arguments[0])
    folders = header_folders()
    found = []
    with tempfile.TemporaryDirectory() as scratch:
        folder = pathlib.Path(scratch)
        with ThreadPoolExecutor() as pool:
            list(pool.map(lambda item: dump(build / item[1] / f"{item[0]}.so", folders, folder / f"{item[0]}.abi"),
                          LIBRARIES.items()))
        if "--write" in sys.argv:
            for name in LIBRARIES:
                (ROOT / "abi" / f"{name}.abi").write_text((folder / f"{name}.abi").read_text())
            return 0
        found.extend(unnoticed(folder / "planted"))
        for name in LIBRARIES:
            report = difference(ROOT / "abi" / f"{name}.abi", folder / f"{name}.abi")
            if report:
                found.append(f"the ABI of {name} differs from abi/{name}.abi:\n{report}")
    for problem in found:
        print(problem, file=sys.stderr)
    if found:
        print("docs/abi.md says which changes are allowed and how to update the record.", file=sys.stderr)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
