#!/usr/bin/env python3
"""Compares gsl/host/supplies.txt, the list of what a host supplies, with everything that could contradict it.

usage: check_host_view.py [--write] [ROOT [LIBRARY]]

- docs/host.md has the list as a table; --write writes it there.
- Every header of a host that the sources of the library include has a section, and every name with a prefix of the host
  that they use is listed. So is every member of the host that they name, unless the library has that name itself.
- Every listed name is declared by the stand-in and by the second host of the tests, and a case of the conformance suite
  tests it.
- A section that ends in "optional" lists a header that a host may leave out. The second host leaves it out.
- The headers of the second host declare nothing else, apart from names that begin with xh_. The library is built over
  these headers, so that nothing is missing in the list.
- Every symbol of the host that LIBRARY needs is listed, is private to the host's headers, or is virtual.
"""

import pathlib
import re
import subprocess
import sys

import house_check

TABLE = "gsl/host/supplies.txt"
DOCUMENT = "docs/host.md"
SECOND = "tests/external_host/include"
SUITE = "tests/host_conformance"
BEGIN, END = "<!-- supplies: begin -->\n", "<!-- supplies: end -->\n"
LIBRARY_ROOMS = ("gsl/include", "gsl/impl", "gsl/persist")
PREFIXED = re.compile(r"\b(?:mem|typ|pnt|aio|omi|omni|atr|cow|nex|cls|g3d|omu|ftr)_\w+")
TOKEN = re.compile(r"[A-Za-z_]\w*|::|->|<<|>>|==|!=|\S")
WORDS_BEFORE_A_BRACKET = {"__attribute__", "alignas", "decltype", "noexcept", "sizeof", "if", "for", "while", "switch"}
COMPILED = "compiled"
ATTRIBUTE = re.compile(r"__attribute__\(\((?:[^()]|\([^()]*\))*\)\)")
# Bases of listed templates, which a host need not have.
STANDIN_BASES = {"cls_TypeAdapterBase", "omu_BaseVarray"}
# A class that is copied is assigned, too.
ASSIGNMENT = "operator="


def without_comments(text):
    text = re.sub(r"//[^\n]*|/\*.*?\*/", "", text, flags=re.DOTALL)
    return re.sub(r'"(?:[^"\\\n]|\\.)*"', '""', text)


def split_name(name):
    """Returns the class, or None, and the last part of a listed name."""
    match = re.match(r"(?:(\w+)(?:<[^>()]*>)?::)?(operator(?:\(\)|[^\s\w(]+)|\w+)", name)
    return match.group(1), match.group(2)


class Row:
    def __init__(self, header, line, is_optional=False):
        self.header, self.is_optional = header, is_optional
        self.name, self.meaning, self.cases = [part.strip() for part in line.split(" | ")]
        self.owner, self.last = split_name(self.name)


def rows_of(text):
    rows, header, is_optional = [], None, False
    for line in text.splitlines():
        if line.startswith("#") or not line.strip():
            continue
        begins = re.fullmatch(r"\[(\w+\.h)\]( optional)?", line)
        if begins:
            header, is_optional = begins.group(1), begins.group(2) is not None
        else:
            rows.append(Row(header, line, is_optional))
    return rows


class Declared:
    """The names that a header declares: public and protected names, virtual names, and the names that are private."""

    def __init__(self, text):
        self.public, self.virtual, self.private = set(), set(), set()
        text = re.sub(r"^\s*#(?:[^\n]*\\\n)*[^\n]*", "", without_comments(text), flags=re.MULTILINE)
        text = ATTRIBUTE.sub("", re.sub(r"\[\[.*?\]\]", "", text))
        self.tokens = TOKEN.findall(text)
        self.position = 0
        self.scope(None, "public")

    def note(self, name, access, is_virtual=False):
        (self.private if access == "private" else self.public).add(name)
        if is_virtual:
            self.virtual.add(name)

    def skip_block(self):
        depth = 1
        while depth and self.position < len(self.tokens):
            depth += {"{": 1, "}": -1}.get(self.tokens[self.position], 0)
            self.position += 1

    def scope(self, kind, access):
        """Reads declarations up to the end of a block."""
        head = []
        while self.position < len(self.tokens):
            token = self.tokens[self.position]
            self.position += 1
            if token == "}":
                return
            if token == ":" and len(head) == 1 and head[0] in ("public", "protected", "private"):
                access, head = head[0], []
            elif token == ";":
                self.declaration(head, access)
                head = []
            elif token == "{":
                self.block(head, access)
                head = []
            else:
                head.append(token)

    def block(self, head, access):
        plain = without_template(head)
        if "enum" in plain:
            self.note(plain[plain.index("enum") + 1], access)
            self.enumerators(access)
        elif plain[:1] and plain[0] in ("class", "struct", "union") and "(" not in plain:
            before_bases = plain[: plain.index(":")] if ":" in plain else plain
            if before_bases[-1] not in ("class", "struct", "union"):
                self.note(before_bases[-1], access)
            inner = "private" if plain[0] == "class" else "public"
            self.scope(plain[0], inner if access != "private" else "private")
        elif "namespace" in plain:
            self.note(plain[-1], access)
            self.scope("namespace", access)
        else:
            self.declaration(head, access)
            self.skip_block()

    def enumerators(self, access):
        depth, expects = 1, True
        while depth and self.position < len(self.tokens):
            token = self.tokens[self.position]
            self.position += 1
            depth += {"{": 1, "}": -1}.get(token, 0)
            if expects and re.match(r"[A-Za-z_]", token):
                self.note(token, access)
            expects = token == ","

    def declaration(self, head, access):
        plain = without_template(head)
        # The rest of a constructor's initialisers follows braces.
        if not plain or plain[0] == "," or "extern" in plain and "template" in head:
            return None
        is_virtual = "virtual" in plain or "override" in plain
        if "operator" in plain:
            at = plain.index("operator") + 1
            end = plain.index("(", at + (1 if plain[at] == "(" else 0))
            return self.note("operator" + "".join(plain[at:end]), access, is_virtual)
        if plain[0] == "using":
            return self.note(plain[1], access)
        for i in range(len(plain) - 1):
            is_word = re.match(r"[A-Za-z_]", plain[i]) and plain[i] not in WORDS_BEFORE_A_BRACKET
            if is_word and plain[i + 1] == "(":
                is_destructor = i > 0 and plain[i - 1] == "~"
                return None if is_destructor else self.note(plain[i], access, is_virtual)
        words = [t for t in plain[: plain.index("=")] if re.match(r"[A-Za-z_]", t)] if "=" in plain else plain
        words = [t for t in words if re.match(r"[A-Za-z_]", t)]
        if len(words) > 1:
            self.note(words[-1], access)
        return None


def without_template(head):
    """Returns the tokens without a leading `template <...>`, without export macros, and without `friend`."""
    tokens = list(head)
    while tokens[:1] == ["template"]:
        depth, end = 0, 1
        while end < len(tokens):
            depth += {"<": 1, ">": -1, ">>": -2}.get(tokens[end], 0)
            end += 1
            if depth == 0:
                break
        tokens = tokens[end:]
    return [t for t in tokens if not t.endswith("_API") and t != "friend"]


def table(rows):
    """Yields the lines of the list in docs/host.md."""
    needed = [row for row in rows if not row.is_optional]
    yield f"The list has {len(needed)} names in {len({row.header for row in needed})} headers. The last column names cases of the"
    yield f"conformance suite, or says `{COMPILED}` where no case of its own tests the name."
    header = None
    for row in rows:
        if row.header != header:
            header = row.header
            note = ", which a host may leave out" if row.is_optional else ""
            yield from ("", f"**`{header}`**{note}", "", "| name | meaning | tested by |", "|---|---|---|")
        name = row.name.replace("|", "\\|")
        cases = ", ".join(f"`{case}`" for case in row.cases.split())
        yield f"| `{name}` | {row.meaning} | {cases} |"


def section(document):
    begin, end = document.find(BEGIN), document.find(END)
    return None if begin < 0 or end < begin else (begin + len(BEGIN), end)


def document_problems(root, rows):
    document = (root / DOCUMENT).read_text()
    place = section(document)
    expected = "\n" + "\n".join(table(rows)) + "\n\n"
    if place is None:
        yield f"{DOCUMENT}: has no section between {BEGIN.strip()} and {END.strip()}"
    elif document[place[0] : place[1]] != expected:
        yield f"{DOCUMENT}: the list differs from {TABLE}; write it with scripts/check_host_view.py --write"


def standin_headers(root):
    return {path.name: path for path in (root / "gsl/host").glob("*/*.h")}


def library_texts(root):
    for room in LIBRARY_ROOMS:
        for path in sorted((root / room).rglob("*")):
            if path.suffix in (".h", ".cpp"):
                yield path.relative_to(root).as_posix(), path.read_text()


def use_problems(root, rows):
    """What the sources of the library use of the host is listed."""
    headers = standin_headers(root)
    sections = {row.header for row in rows}
    listed = {row.last for row in rows} | {row.owner for row in rows}
    own = Declared("")
    for room in LIBRARY_ROOMS:
        for path in (root / room).rglob("*.h"):
            declared = Declared(path.read_text())
            own.public |= declared.public | declared.private
    members = set()
    for path in headers.values():
        members |= Declared(path.read_text()).public
    for name, text in library_texts(root):
        for included in re.findall(r'^#include "(\w+\.h)"', text, re.MULTILINE):
            if included in headers and included not in sections:
                yield f"{name}: includes {included}, which {TABLE} does not list"
        plain = without_comments(re.sub(r"^#.*", "", text, flags=re.MULTILINE))
        used = set(PREFIXED.findall(plain))
        used |= {word for word in re.findall(r"(?:\.|->|::)\s*(\w+)\s*\(", plain) if word in members}
        for word in sorted(used - listed - own.public):
            yield f"{name}: uses {word}, which {TABLE} does not list"


def host_problems(root, rows):
    """Both hosts declare what is listed; the second host declares nothing else."""
    headers = standin_headers(root)
    for row in rows:
        texts = []
        if row.header in headers:
            text = headers[row.header].read_text()
            included = re.findall(r'#include "(\w+\.h)"', text)
            texts.append(("the stand-in", text + "".join(headers[n].read_text() for n in included if n in headers)))
        second = root / SECOND / row.header
        if second.exists():
            text = second.read_text()
            included = [root / SECOND / name for name in re.findall(r'#include "(xh_\w+\.h|nex_\w+\.h)"', text)]
            texts.append(("the second host", text + "".join(path.read_text() for path in included)))
        if row.is_optional and second.exists():
            yield f"{TABLE}: the second host has {row.header}, which the library must do without"
        elif len(texts) != (1 if row.is_optional else 2):
            yield f"{TABLE}: a host has no header {row.header}"
        for host, text in texts:
            for word in (row.owner, row.last):
                if word and not re.search(rf"(?<!\w){re.escape(word)}(?!\w)", text):
                    yield f"{TABLE}: {host} does not declare {word} in {row.header}"
    anywhere = {name for row in rows for name in (row.owner, row.last)}
    for path in sorted((root / SECOND).glob("*.h")):
        if path.name.startswith("xh_"):
            continue
        listed = {name for row in rows if row.header == path.name for name in (row.owner, row.last)}
        declared = Declared(path.read_text())
        # A class of another header may be declared, and a listed virtual operation overridden.
        listed |= {name for name in anywhere if name and (PREFIXED.match(name) or name in declared.virtual)}
        for name in sorted(declared.public - listed - {ASSIGNMENT}):
            if not name.startswith("xh_") and not is_field(path, name):
                yield f"{SECOND}/{path.name}: declares {name}, which {TABLE} does not list"


def is_field(path, name):
    """True for the fields of an aggregate, whose names are the host's."""
    body = re.search(rf"struct \w*\s*\w+ \{{[^}}]*\b{re.escape(name)}\b[^}}]*\}}", path.read_text())
    return body is not None and not re.search(rf"\b{re.escape(name)}\(", body.group())


def case_problems(root, rows):
    text = "".join(path.read_text() for path in sorted((root / SUITE).glob("*_cases.cpp")))
    cases = set(re.findall(r'^ +\{"(\w+)", *"', text, re.MULTILINE)) | set(re.findall(r'^ +\{"(\w+)",$', text, re.MULTILINE))
    run = set((root / SUITE / "CMakeLists.txt").read_text().split())
    for case in sorted(cases):
        if case not in run and f"{case})" not in run:
            yield f"{SUITE}/CMakeLists.txt: does not run the case {case}"
    for row in rows:
        if not row.cases:
            yield f"{TABLE}: {row.name} has no case"
        for case in row.cases.split():
            if case != COMPILED and case not in cases:
                yield f"{TABLE}: {row.name} names the case {case}, which the suite does not have"


def needed_names(library):
    """Yields the demangled names that the library needs and that no versioned library of the system has."""
    text = subprocess.run(["nm", "--dynamic", "--demangle", "--undefined-only", library], check=True,
                          capture_output=True, text=True).stdout
    for line in text.splitlines():
        match = re.match(r"^\s*([A-Za-z]) (.*)$", line)
        if match and match.group(1) not in "wv" and not re.search(r"@(?!@?GSL_)", match.group(2)):
            yield re.sub(r"@@?GSL_\d+\.\d+$", "", match.group(2))


def symbol_problem(name, listed, hidden):
    """Returns what is wrong with a name that the library needs, or None."""
    if re.match(r"operator (?:new|delete)\b", name):
        return None  # The standard library has them where the host has not.
    about = re.match(r"(?:vtable|VTT|typeinfo|typeinfo name) for (\w+)", name)
    if about:
        words = [about.group(1)]
    else:
        plain = re.sub(r"\[abi:\w+\]", "", name)
        match = re.search(r"(?:(\w+)(?:<.*>)?::)?(~?\w+|operator(?:\(\)|[^\s\w(]+))(?:\(.*\)(?: const)?)?$", plain)
        words = [word.lstrip("~") for word in match.groups() if word]
    if words[0].startswith(("gsl_", "xh_")) or words[-1].startswith("xh_"):
        return None
    missing = [word for word in words if word not in listed and word not in hidden]
    return f"{name}: is needed, but {TABLE} does not list {', '.join(missing)}" if missing else None


def symbol_problems(root, rows, library):
    listed = {row.last for row in rows} | {row.owner for row in rows}
    hidden = STANDIN_BASES | {ASSIGNMENT}
    for path in [*standin_headers(root).values(), *(root / SECOND).glob("*.h")]:
        declared = Declared(path.read_text())
        hidden |= declared.private | declared.virtual
    names = list(needed_names(library))
    if not names:
        yield f"{library}: needs nothing of a host"
    for name in names:
        problem = symbol_problem(name, listed, hidden)
        if problem:
            yield problem


def check(root, library=None):
    root = pathlib.Path(root)
    rows = rows_of((root / TABLE).read_text())
    problems = [*document_problems(root, rows), *use_problems(root, rows), *host_problems(root, rows),
                *case_problems(root, rows)]
    if library:
        problems += symbol_problems(root, rows, library)
    return problems, len(rows)


def write(root):
    path = root / DOCUMENT
    document = path.read_text()
    place = section(document)
    rows = rows_of((root / TABLE).read_text())
    path.write_text(document[: place[0]] + "\n" + "\n".join(table(rows)) + "\n\n" + document[place[1] :])


def main():
    arguments = [argument for argument in sys.argv[1:] if argument != "--write"]
    root = pathlib.Path(arguments[0]) if arguments else pathlib.Path(__file__).resolve().parent.parent
    if "--write" in sys.argv:
        write(root)
        return 0
    return house_check.run(lambda _: check(root, *arguments[1:2]), "no names found")


if __name__ == "__main__":
    sys.exit(main())
