#!/usr/bin/env bash
# Completes lines as bash does, and compares the offers with the expected ones.
#
#   mesh_completion_test.sh COMPLETION PROGRAM
set -euo pipefail

# shellcheck source=tools/gsl-mesh.bash
source "$1"
program=$(realpath "$2")
failures=0

# expect OFFERS WORD...: completes the last of the words.
expect() {
  local expected=$1 got
  shift
  COMP_WORDS=(gsl-mesh "$@")
  COMP_CWORD=$#
  COMPREPLY=()
  # Outside of a completion, options of the completion cannot be set.
  _gsl_mesh || true
  got=$(printf '%s\n' "${COMPREPLY[@]}" | sort | tr '\n' ' ' | sed 's/ $//')
  if [ "$got" != "$expected" ]; then
    printf 'gsl-mesh %s<TAB>\n  expected: %s\n  offered:  %s\n' "$*" "$expected" "$got" >&2
    failures=$((failures + 1))
  fi
}

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
touch part.stl other.stl

export LC_ALL=C
expect "check convert move" ""
expect "check convert" c
expect "other.stl part.stl" check ""
expect "part.stl" check other.stl p
expect "part.stl" convert p
expect "part.stl" check part.stl --json p
expect "part.stl" move part.stl out.stl --matrix = p
expect "obj off" check - --format o
expect "--quiet" check part.stl --q

# Exactly the options of the help are offered.
help=$("$program" --help | sed -nE 's/^  (-[a-z], |    )(--[a-z-]+).*/\1\2/p' | tr -s ', ' '\n' |
  grep -e - | sort | tr '\n' ' ' | sed 's/ $//')
expect "$help" -
if [ "$(echo "$help" | wc -w)" -lt 5 ]; then
  echo "the help shows too few options: $help" >&2
  failures=$((failures + 1))
fi

# The command is registered under its name.
complete -p gsl-mesh | grep -q -- '-F _gsl_mesh gsl-mesh' || failures=$((failures + 1))

exit $((failures > 0))
