#!/usr/bin/env bash
# Completes lines as bash does, and compares the offers with the expected ones.
#
#   completion_test.sh COMPLETION PROGRAM
set -euo pipefail

# shellcheck source=tools/gsl-sweep.bash
source "$1"
program=$(realpath "$2")
failures=0

# offered WORD...: prints the offers for the last of the words, sorted, in one line.
offered() {
  COMP_WORDS=(gsl-sweep "$@")
  COMP_CWORD=$#
  COMPREPLY=()
  _gsl_sweep
  printf '%s\n' "${COMPREPLY[@]}" | sort | tr '\n' ' ' | sed 's/ $//'
}

expect() {
  local expected=$1 got
  shift
  got=$(offered "$@")
  if [ "$got" != "$expected" ]; then
    printf 'gsl-sweep %s<TAB>\n  expected: %s\n  offered:  %s\n' "$*" "$expected" "$got" >&2
    failures=$((failures + 1))
  fi
}

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
touch part.stl "my part.OBJ" part.3mf part.step part.txt answer.json page.html
mkdir parts

export LC_ALL=C
expect "my part.OBJ part.3mf part.stl parts" ""
expect "part.3mf part.stl parts" part
expect "my part.OBJ" part.stl m
expect "part.stl parts" part.stl --output p
expect "part.stl parts" part.stl --output = p
expect "answer.json" --json a
expect "page.html parts" part.stl --view p
expect "part.txt" --pose part.t
expect "part.txt" --directions part.t
expect "" --sphere ""
expect "auto never plain" --progress ""
expect "plain" --progress = p
expect "auto never plain" --progress =
expect "obj off" --format o
expect "-x -y -z x y z" -d ""
expect "-x -y -z" --direction -
expect "-z" --direction = -z
expect "" --threads ""
expect "" --clearance ""
expect "" --allowance = ""
expect "--clearance" --c
expect "" --offset = ""
expect "--max-distance" --m
expect "--offset --one-sided --output" --o
expect "" --output-

# Exactly the options of the help are offered.
help=$("$program" --help | sed -nE 's/^  (-[a-z], |    )(--[a-z-]+).*/\1\2/p' | tr -s ', ' '\n' |
  grep -e - | sort | tr '\n' ' ' | sed 's/ $//')
expect "$help" -
if [ "$(echo "$help" | wc -w)" -lt 12 ]; then
  echo "the help shows too few options: $help" >&2
  failures=$((failures + 1))
fi

# The command is registered under its name.
complete -p gsl-sweep | grep -q -- '-F _gsl_sweep gsl-sweep' || failures=$((failures + 1))

exit $((failures > 0))
