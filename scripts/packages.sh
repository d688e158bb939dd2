#!/usr/bin/env bash
# The only list of the Debian packages that this project needs.
#
#   ./scripts/packages.sh [GROUP...]            print the packages of the groups
#   ./scripts/packages.sh --install [GROUP...]  install those that are missing (as root)
#
# Groups: build python test check bits docs bench package bare abi view. Without a group, printing takes all groups and installing takes
# build.
#
# The other scripts source this file and call need_packages.

packages_of() {
  case $1 in
    # Packages to build and install the library and the programs. (Assimp's CMake files name libz.so.)
    build)
      echo g++ cmake ninja-build \
        libfast-float-dev libassimp-dev zlib1g-dev libcli11-dev nlohmann-json3-dev libsqlite3-dev \
        libcairo2-dev fonts-dejavu-core
      ;;
    # The Python module. Without these packages the rest is built.
    python)
      echo "$(packages_of build)" python3 python3-dev pybind11-dev python3-numpy
      ;;
    # Packages to build and run every test, and to make the wheel.
    test)
      echo "$(packages_of python)" python3-pytest python3-scipy python3-pip python3-setuptools python3-wheel \
        python3-matplotlib python3-distributed \
        libgtest-dev libgmock-dev librapidcheck-dev \
        libgmp-dev git python3-jsonschema help2man poppler-utils python3-markdown-it
      ;;
    # The second compiler, formatting, lint, sanitizers, fuzzing, coverage, consumers.
    check)
      echo clang libclang-rt-14-dev llvm clang-format clang-tidy make pkg-config
      ;;
    # Other processors, for ./scripts/check bits.
    bits) echo g++-aarch64-linux-gnu qemu-user googletest ;;
    # The documents as pages, and the reference of the public headers.
    docs) echo doxygen python3 python3-markdown-it ;;
    # Benchmarks, and the libraries that they compare with ours.
    bench)
      echo "$(packages_of python)" libbenchmark-dev \
        libeigen3-dev libglm-dev libbullet-dev libopenblas-dev libboost-graph-dev libfcl-dev libembree-dev libcgal-dev \
        libprotobuf-dev protobuf-compiler libflatbuffers-dev flatbuffers-compiler \
        libcapnp-dev capnproto
      ;;
    # Debian packages of our own.
    package) echo debhelper dh-python dpkg-dev fakeroot lintian git ;;
    # The minimal root of ./scripts/check bare, which is skipped where this package cannot be installed.
    bare) echo mmdebstrap ;;
    # The comparison of ./scripts/check abi, which is skipped where this package cannot be installed.
    abi) echo abigail-tools ;;
    # The viewer page: its script from its sources, and its test in a browser, in ./scripts/check view, which is
    # skipped where these packages cannot be installed. Packages of node from elsewhere bring npm along.
    view)
      echo chromium
      command -v npm >/dev/null || echo nodejs npm
      ;;
    *)
      echo "packages: no group named '$1'; there are: build python test check bits docs bench package bare abi view" >&2
      return 2
      ;;
  esac
}

packages_of_groups() {
  local group
  for group in "$@"; do packages_of "$group" || return; done | tr ' ' '\n' | sort -u
}

missing_packages() {
  local package
  packages_of_groups "$@" | while read -r package; do
    case $(dpkg-query -W -f='${db:Status-Abbrev}' "$package" 2>/dev/null) in
      ?i*) ;;
      *) echo "$package" ;;
    esac
  done
}

# need_packages GROUP...: as root installs missing packages; otherwise names them and exits with 2.
need_packages() {
  local missing
  packages_of_groups "$@" >/dev/null || exit 2
  if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
    echo "This is not a Debian system; the Debian packages $(packages_of_groups "$@" | xargs)" \
      "must be there." >&2
    return 0
  fi
  missing=$(missing_packages "$@" | xargs)
  [ -n "$missing" ] || return 0
  if [ "$(id -u)" -ne 0 ]; then
    echo "Missing packages: $missing" >&2
    echo "Install them as root: apt-get install --no-install-recommends $missing" >&2
    exit 2
  fi
  echo "Installing: $missing"
  local log
  log=$(mktemp)
  # Checks that run in parallel install one after the other.
  # shellcheck disable=SC2086  # one word per package
  if ! { flock 9 && apt-get -o Acquire::Retries=3 update &&
    DEBIAN_FRONTEND=noninteractive apt-get -o Acquire::Retries=3 -o Dpkg::Use-Pty=0 \
      install -y --no-install-recommends $missing; } >"$log" 2>&1 </dev/null 9<"${BASH_SOURCE[0]}"; then
    tail -n 40 "$log" >&2
    rm -f "$log"
    echo "The installation failed. To install by hand: apt-get update && apt-get install --no-install-recommends" \
      "$missing" >&2
    exit 2
  fi
  rm -f "$log"
}

if [ "${BASH_SOURCE[0]}" = "$0" ]; then
  set -euo pipefail
  if [ "${1:-}" = --install ]; then
    shift
    need_packages "${@:-build}"
  else
    [ $# -gt 0 ] || set -- build python test check bits docs bench package bare abi view
    packages_of_groups "$@"
  fi
fi
