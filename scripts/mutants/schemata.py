"""Writes sources that hold all of their mutants, of which a variable of the environment chooses one.

An expression `a < b` becomes `(gsl_mutants::On(7) ? (a <= b) : (a < b))`. The lines stay where they are.
"""

import re

# GSL_MUTANT is the number of the mutant; without it the code is the original. GSL_MUTANTS_REACHED names a file with
# a byte for each number, where a program that runs the original writes a 1 for each place that it reaches. The bytes
# are shared, so that children write into them too.
HEADER = r"""#ifndef GSL_MUTANTS_H
#define GSL_MUTANTS_H

#include <fcntl.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace gsl_mutants {

inline int g_active = 0;
inline unsigned char* g_reached = nullptr;
inline int g_count = 0;

// Runs in each program and each shared library, before any object of them is made.
__attribute__((constructor(101), used)) inline void Start() {
  const char* const number = getenv("GSL_MUTANT");
  const char* const path = getenv("GSL_MUTANTS_REACHED");
  if (number != nullptr) g_active = atoi(number);
  if (number != nullptr || path == nullptr || g_reached != nullptr) return;
  const int file = open(path, O_RDWR | O_CLOEXEC);
  struct stat about;
  if (file < 0 || fstat(file, &about) != 0) abort();
  void* const bytes = mmap(nullptr, static_cast<size_t>(about.st_size), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
  close(file);
  if (bytes == MAP_FAILED) abort();
  g_reached = static_cast<unsigned char*>(bytes);
  g_count = static_cast<int>(about.st_size);
  g_active = -1;
}

__attribute__((noinline)) inline bool Reach(int number) {
  if (number < g_count) __atomic_store_n(g_reached + number, 1, __ATOMIC_RELAXED);
  return false;
}

/// Returns true when this mutant is chosen. A constant expression has no mutant.
constexpr bool On(int number) {
  return __builtin_is_constant_evaluated()
             ? false
             : __builtin_expect(g_active == number, 0) || (__builtin_expect(g_active < 0, 0) && Reach(number));
}

/// Another index that exists.
template <class T, class N>
constexpr T Next(T index, N count) {
  return static_cast<T>(index + 1) == static_cast<T>(count) ? static_cast<T>(0) : static_cast<T>(index + 1);
}
template <class T>
constexpr T Previous(T index) {
  return index == static_cast<T>(0) ? index : static_cast<T>(index - 1);
}

} // namespace gsl_mutants

#endif
"""

ON = re.compile(r"gsl_mutants::On\((\d+)\)")


def sites_of(mutants):
    """Returns (begin, end, [(number, place)...]) of every range, outer ranges first."""
    ranges = {}
    for number, place in mutants:
        ranges.setdefault((place.begin, place.end), []).append((number, place))
    sites, open_ends = [], []
    for (begin, end), chosen in sorted(ranges.items(), key=lambda item: (item[0][0], -item[0][1])):
        while open_ends and open_ends[-1] <= begin:
            open_ends.pop()
        if open_ends and end > open_ends[-1]:
            raise ValueError(f"line {chosen[0][1].line}: two places overlap")
        open_ends.append(end)
        sites.append((begin, end, chosen))
    return sites


def written(site, original):
    """Returns the code of a place with its mutants. The mutants of what is inside are in the original alone."""
    _, _, chosen = site
    if chosen[0][1].text == "":
        return f"{{ if (gsl_mutants::On({chosen[0][0]})) {{}} else {original} }}"
    choices = "".join(f"gsl_mutants::On({number}) ? {as_bool(place, place.text)} : " for number, place in chosen)
    return f"({choices}{as_bool(next((p for _, p in chosen if p.as_bool), chosen[0][1]), original)})"


def as_bool(place, text):
    return f"static_cast<bool>({text})" if place.as_bool else f"({text})"


def body_of(text, sites, begin, end):
    """Returns the code of a range, in which `sites` lie."""
    parts, position, k = [], begin, 0
    while k < len(sites):
        inner = k + 1
        while inner < len(sites) and sites[inner][0] < sites[k][1]:
            inner += 1
        parts.append(text[position:sites[k][0]])
        parts.append(written(sites[k], body_of(text, sites[k + 1:inner], sites[k][0], sites[k][1])))
        position, k = sites[k][1], inner
    return "".join(parts) + text[position:end]


def instrumented(text, mutants, header, name):
    """Returns the file with these (number, place) in it."""
    if not mutants:
        return text
    return f'#include "{header}"\n#line 1 "{name}"\n' + body_of(text, sites_of(mutants), 0, len(text))


# A place in a message: of an error, or of the code that made an instance of a template. gcc writes the latter before
# the error, and clang after it.
MESSAGE = re.compile(r"^([^\s:]+):(\d+):(\d+):\s+(?:(?:fatal )?(error):|(note): in instantiation|required from)", re.MULTILINE)


def places_of(name, messages):
    """Returns a list for each error: the lines and columns of the file that it may come from. That of the error comes
    first, then the code that needed the instance of a template."""
    found, needed = [], []
    for file, line, column, error, note in MESSAGE.findall(messages):
        place = [(int(line), int(column))] if file == name else []
        if error:
            found.append(place + needed)
            needed = []
        elif note:
            found[-1:] = [known + place for known in found[-1:]]
        else:
            needed += place
    return found


def to_blame(source, name, messages):
    """Returns the numbers of the mutants that the compiler does not accept, by its messages."""
    lines = source.split("\n")[2:]
    blamed = set()
    for places in places_of(name, messages):
        for line, column in places:
            code = lines[line - 1]
            before = [match for match in ON.finditer(code) if match.start() < column]
            match = before[-1] if before else ON.search(code)
            if match:
                blamed.add(int(match.group(1)))
                break
    return blamed
