#!/usr/bin/env bash
# Completes lines as bash does, and compares the offers with the expected ones.
#
#   mesh_completion_test.sh COMPLETION PROGRAM
set -euo pipefail

program=gsl-mesh
# shellcheck source=tools/gsl-mesh.bash
source "$1"
# shellcheck source=tests/tools/completion_expect.sh
source "$(dirname "${BASH_SOURCE[0]}")/completion_expect.sh"
binary=$(realpath "$2")
cd "$folder"
touch part.stl other.stl

expect "check convert move" ""
expect "check convert" c
expect "other.stl part.stl" check ""
expect "part.stl" check other.stl p
expect "part.stl" convert p
expect "part.stl" check part.stl --json p
expect "part.stl" move part.stl out.stl --matrix = p
expect "obj off" check - --format o
expect "--quiet" check part.stl --q

expect_options "$binary"

exit $((failures > 0))
