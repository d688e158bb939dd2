#!/usr/bin/env bash
# Completes lines as bash does, and compares the offers with the expected ones.
#
#   model_completion_test.sh COMPLETION PROGRAM
set -euo pipefail

program=gsl-model
# shellcheck source=tools/gsl-model.bash
source "$1"
# shellcheck source=tests/tools/completion_expect.sh
source "$(dirname "${BASH_SOURCE[0]}")/completion_expect.sh"
binary=$(realpath "$2")
cd "$folder"
touch part.gslr other.gslr

expect "other.gslr part.gslr" ""
expect "part.gslr" p
expect "check convert diff list show" part.gslr ""
expect "check convert" part.gslr c
expect "" part.gslr show ""
expect "other.gslr" part.gslr diff o
expect "part.gslr" part.gslr list --json p
expect "part.gslr" part.gslr list --json = p
expect "--quiet" part.gslr diff --q

expect_options "$binary"

exit $((failures > 0))
