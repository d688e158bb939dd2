#!/usr/bin/env python3
"""Checks the names that libgsl_geometry exports and the names that it needs from the host.

usage: check_symbols.py LIBRARY HOST_HEADER_FOLDER...

The library may export the names that are declared GSL_API: its own names, and the host's templates over its
classes. It may need the names of the C++ runtime, and names that a header of the host declares. It allocates through
mem_Malloc and the plain allocation operators alone, which a host may replace.
"""

import pathlib
import re
import subprocess
import sys

# Matches a class, a function or an enumeration of this library, a template of the host over them, and a function
# that the object model finds by name.
EXPORTED = re.compile(
    r"^(?:(?:vtable|VTT|typeinfo|typeinfo name|guard variable) for |(?:non-)?virtual thunk to )?"
    r"(?:gsl_\w+|(?:(?:omi|omu|cls|cow|typ)_\w+(?:::\w+)?<)+(?:\w+, )*gsl_\w+|omu_ReturnPrim\()"
)
# The demangled name of a function template begins with the result.
EXPORTED_AFTER_RESULT = re.compile(r"^[\w:*& ]+ (?:gsl_\w+|(?:(?:atr|(?:omi|omu|cls|cow|typ)_\w+(?:::\w+)?)<)+(?:\w+, )*gsl_\w+)")
# The standard library makes its own templates visible. Their instantiations are weak.
STANDARD_TEMPLATE = re.compile(r"^(?:[\w:<>*& ,]+ )?(?:typeinfo (?:name )?for |vtable for |guard variable for )?(?:std|__gnu_cxx)::")
# A class of the host without a key function has type information in each library that asks for it. It is weak, too.
HOST_TYPE = re.compile(r"^typeinfo (?:name )?for (?!gsl_)[a-z0-9]+_\w+$")

OWN_VERSION = re.compile(r"(?:@@?|^)GSL_\d+\.\d+$")
# Take memory that no host sees. A host that replaces the plain operators need not replace the aligned ones.
AROUND_THE_HOST = re.compile(
    r"^(?:(?:malloc|calloc|realloc|reallocarray|free|memalign|aligned_alloc|posix_memalign|valloc|str[n]?dup|v?asprintf)@"
    r"|operator (?:new|delete)(?:\[\])?\(.*std::align_val_t)"
)
WORD = re.compile(r"[A-Za-z_]\w*")
LANGUAGE = set(
    "bool char short int long float double void unsigned signed const volatile operator new delete "
    "vtable typeinfo name for VTT thunk to virtual guard variable".split()
)


def symbols(library, *options):
    """Yields pairs of nm's type letter and the demangled name. A name of the system keeps its version; a name of these
    libraries loses it."""
    text = subprocess.run(
        ["nm", "--dynamic", "--demangle", *options, library], check=True, capture_output=True, text=True
    ).stdout
    for line in text.splitlines():
        match = re.match(r"^[0-9a-f]*\s*([A-Za-z]) (.*)$", line)
        if match:
            kind, name = match.groups()
            name = OWN_VERSION.sub("", name)
            if name:  # The version itself is a symbol, too.
                yield kind, name


def is_allowed_export(kind, name):
    if STANDARD_TEMPLATE.match(name) or HOST_TYPE.match(name):
        return kind in "WVu"
    return bool(EXPORTED.match(name) or EXPORTED_AFTER_RESULT.match(name))


def undeclared_words(name, declared):
    without_std = re.sub(r"\b(?:std|__gnu_cxx)::[\w:]+", "", name)
    return [
        word
        for word in WORD.findall(without_std)
        if word not in LANGUAGE and word not in declared and not word.startswith("gsl_")
    ]


def declared_words(folders):
    words = set()
    for folder in folders:
        for header in pathlib.Path(folder).glob("*.h"):
            text = re.sub(r"//[^\n]*|/\*.*?\*/", "", header.read_text(), flags=re.DOTALL)
            words.update(WORD.findall(text))
    return words


def problems(library, folders):
    exported = list(symbols(library, "--defined-only"))
    if not exported:
        yield f"{library} exports nothing"
    for kind, name in exported:
        if not is_allowed_export(kind, name):
            yield f"{name}: is exported, but does not belong to the interface of this library"
    declared = declared_words(folders)
    for kind, name in symbols(library, "--undefined-only"):
        if AROUND_THE_HOST.match(name):
            yield f"{name}: takes memory that the host does not see"
        if kind in "wv" or "@" in name:  # The name is optional, or belongs to a versioned system library.
            continue
        words = undeclared_words(name, declared)
        if words:
            yield f"{name}: is needed, but no header of the host declares {', '.join(words)}"


def main():
    if len(sys.argv) < 3:
        print(__doc__, file=sys.stderr)
        return 2
    found = sorted(set(problems(sys.argv[1], sys.argv[2:])))
    for problem in found:
        print(problem, file=sys.stderr)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
