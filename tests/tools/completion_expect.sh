# What the tests of completions share. A test sets `program` to the name of the program, and sources its
# completion and then this file.
# shellcheck shell=bash
failures=0

# expect OFFERS WORD...: completes the last of the words.
expect() {
  local expected=$1 got
  shift
  COMP_WORDS=("$program" "$@")
  COMP_CWORD=$#
  COMPREPLY=()
  # Outside of a completion, options of the completion cannot be set.
  "_${program//-/_}" || true
  got=$(printf '%s\n' "${COMPREPLY[@]}" | sort | tr '\n' ' ' | sed 's/ $//')
  if [ "$got" != "$expected" ]; then
    printf '%s %s<TAB>\n  expected: %s\n  offered:  %s\n' "$program" "$*" "$expected" "$got" >&2
    failures=$((failures + 1))
  fi
}

# expect_options BINARY: exactly the options of the help are offered, and the command is registered.
expect_options() {
  local help
  help=$("$1" --help | sed -nE 's/^  (-[a-z], |    )(--[a-z-]+).*/\1\2/p' | tr -s ', ' '\n' |
    grep -e - | sort | tr '\n' ' ' | sed 's/ $//')
  expect "$help" -
  if [ "$(echo "$help" | wc -w)" -lt 5 ]; then
    echo "the help shows too few options: $help" >&2
    failures=$((failures + 1))
  fi
  complete -p "$program" | grep -q -- "-F _${program//-/_} $program" || failures=$((failures + 1))
}

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
export LC_ALL=C
