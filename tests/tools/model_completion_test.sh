#!/usr/bin/env bash
# Completes lines as bash does, and compares the offers with the expected ones.
#
#   model_completion_test.sh COMPLETION PROGRAM
set -euo pipefail

# shellcheck source=tools/gsl-model.bash
source "$1"
program=$(realpath "$2")
failures=0

# expect OFFERS WORD...: completes the last of the words.
expect() {
  local expected=$1 got
  shift
  COMP_WORDS=(gsl-model "$@")
  COMP_CWORD=$#
  COMPREPLY=()
  # Outside of a completion, options of the completion cannot be set.
  _gsl_model || true
  got=$(printf '%s\n' "${COMPREPLY[@]}" | sort | tr '\n' ' ' | sed 's/ $//')
  if [ "$got" != "$expected" ]; then
    printf 'gsl-model %s<TAB>\n  expected: %s\n  offered:  %s\n' "$*" "$expected" "$got" >&2
    failures=$((failures + 1))
  fi
}

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
touch part.gslr other.gslr

export LC_ALL=C
expect "other.gslr part.gslr" ""
expect "part.gslr" p
expect "check convert diff list show" part.gslr ""
expect "check convert" part.gslr c
expect "" part.gslr show ""
expect "other.gslr" part.gslr diff o
expect "part.gslr" part.gslr list --json p
expect "part.gslr" part.gslr list --json = p
expect "--quiet" part.gslr diff --q

# Exactly the options of the help are offered.
help=$("$program" --help | sed -nE 's/^  (-[a-z], |    )(--[a-z-]+).*/\1\2/p' | tr -s ', ' '\n' |
  grep -e - | sort | tr '\n' ' ' | sed 's/ $//')
expect "$help" -
if [ "$(echo "$help" | wc -w)" -lt 5 ]; then
  echo "the help shows too few options: $help" >&2
  failures=$((failures + 1))
fi

# The command is registered under its name.
complete -p gsl-model | grep -q -- '-F _gsl_model gsl-model' || failures=$((failures + 1))

exit $((failures > 0))
