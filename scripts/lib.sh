# Functions that the scripts of this folder share. Each script sources this file first.
# shellcheck shell=bash

set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"
jobs=${JOBS:-$(nproc)}
# shellcheck source=scripts/packages.sh
. "$root/scripts/packages.sh"

# The tests use real meshes from the user's folder, or from a folder shared/meshes beside the checkout.
if [ -z "${GSL_MESH_DIR:-}" ] && [ -d "$root/../shared/meshes" ]; then
  GSL_MESH_DIR=$(cd "$root/../shared/meshes" && pwd)
  export GSL_MESH_DIR
fi

if [ -z "${CMAKE_CXX_COMPILER_LAUNCHER:-}" ] && command -v ccache >/dev/null; then
  export CMAKE_CXX_COMPILER_LAUNCHER=ccache
fi

# build_dir NAME: prints the build folder of a preset; each compiler named in CXX has its own folder.
build_dir() {
  echo "$root/build/$1${CXX:+-$(basename "${CXX%% *}")}"
}

# quietly COMMAND...: prints nothing when the command succeeds; prints the end of its output, and the
# command, when it fails.
quietly() {
  local log status=0
  log=$(mktemp)
  "$@" >"$log" 2>&1 </dev/null || status=$?
  if [ "$status" -ne 0 ]; then
    tail -n 100 "$log" >&2
    printf 'Failed. To run it again:\n  cd %q &&%s\n' "$PWD" "$(printf ' %q' "$@")" >&2
  fi
  rm -f "$log"
  return "$status"
}

# python_with MODULE: prints the command of a Python that has the module, or fails. A Python of the user's own may lack it.
python_with() {
  local python
  for python in python3 /usr/bin/python3; do
    if "$python" -c "import $1" 2>/dev/null; then
      echo "$python"
      return
    fi
  done
  return 1
}

# configure PRESET [ARGUMENT...] and build PRESET [TARGET...] print nothing when they succeed; on a
# terminal the build shows its progress.
configure() {
  local preset=$1
  shift
  quietly cmake --preset "$preset" -B "$(build_dir "$preset")" "$@"
}

build() {
  local dir
  dir=$(build_dir "$1")
  shift
  set -- cmake --build "$dir" --parallel "$jobs" ${1:+--target "$@"}
  if [ -t 1 ]; then "$@"; else quietly "$@"; fi
}

# run_tests PRESET [CTEST ARGUMENT...]: prints the closing lines of ctest, and also the failures if
# there are any.
run_tests() {
  local dir log status=0
  dir=$(build_dir "$1")
  shift
  log=$(mktemp)
  ctest --test-dir "$dir" --no-tests=error --output-on-failure --parallel "$jobs" "$@" \
    >"$log" 2>&1 </dev/null || status=$?
  if [ "$status" -ne 0 ]; then
    grep -vE '^ *([0-9]+/[0-9]+ Test .* Passed |Start +[0-9]+:)' "$log" >&2 || true
    printf 'Failed. To run it again:\n  ctest --test-dir %q --output-on-failure --rerun-failed\n' \
      "$dir" >&2
  else
    sed -n '/tests passed/,$p' "$log" | grep -v '^$'
  fi
  rm -f "$log"
  return "$status"
}
