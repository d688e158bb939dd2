# Functions of the checks that type commands in a Debian 12 with nothing in it but git.
#
# A check sets `name`, which is its folder under build/, and sources lib.sh and this file.
# shellcheck shell=bash

release=bookworm
bare="$root/build/$name"
system="$bare/system" # the minimal root
log="$root/build/$name.log"

skip() {
  echo "skipped: $1"
  exit 0
}

# sources: prints the machine's own sources of that Debian release, one deb line each.
sources() {
  apt-get indextargets --format 'deb $(REPO_URI) $(RELEASE) $(COMPONENT)' \
    'Identifier: Packages' 'Origin: Debian' | grep -E "^deb [^ ]+ $release(-updates|-security)? " | sort -u
}

# proxies: prints the proxy settings of apt.
proxies() {
  apt-config dump | grep -E '^Acquire::(http|https)::(Proxy|Proxy::[^ ]+) "[^"]' || true
}

# is_source_reached: downloads one small package from the source, after updating the lists if necessary.
is_source_reached() (
  cd "$bare"
  get() { apt-get -o Acquire::Retries=3 download base-files >/dev/null 2>&1; }
  get || { apt-get update >/dev/null 2>&1 && get; }
)

# apart COMMAND...: runs the command with its own mounts and processes, which end with the command.
apart() { unshare --mount --pid --fork --kill-child "$@"; }

# make_root: makes the minimal root, with nothing but git and the way to the packages.
#
# The checks of one day share an archive of it in build/; each has its own copy.
make_root() {
  local options=(--variant=minbase --include=git --dpkgopt=force-unsafe-io) line archive
  while read -r line; do options+=(--aptopt="$line"); done < <(proxies)
  if sources | grep -q 'https://'; then options+=(--include=ca-certificates); fi
  archive="$root/build/root-$({ printf '%s\n' "$release" "${options[@]}" && sources; } | sha256sum | head -c 12).tar"
  (
    flock 9
    if [ -z "$(find "$archive" -mmin -1000 2>/dev/null)" ]; then
      rm -f "$root"/build/root-*.tar*
      sources | apart mmdebstrap --format=tar "${options[@]}" "$release" "$archive.new" - && mv "$archive.new" "$archive"
    fi
  ) 9>"$root/build/root.lock" >"$log" 2>&1 || return
  mkdir "$system"
  # The checks mount devices of their own.
  tar -x -f "$archive" -C "$system" --numeric-owner --exclude='./dev/*'
}

# in_root SCRIPT: runs the script in the root; the way to the packages is all that it gets from the
# environment of this machine.
in_root() {
  local mounts='
    mount -t proc proc "$0/proc"
    mount -t tmpfs -o mode=755 tmpfs "$0/dev"
    for node in null zero full random urandom; do
      touch "$0/dev/$node"
      mount --bind "/dev/$node" "$0/dev/$node"
    done
    mkdir -m 1777 "$0/dev/shm"
    mount -t tmpfs -o mode=1777 tmpfs "$0/dev/shm"
    mkdir "$0/dev/pts"
    mount -t devpts -o newinstance,ptmxmode=0666,mode=620 devpts "$0/dev/pts"
    ln -s pts/ptmx "$0/dev/ptmx"
    ln -s /proc/self/fd "$0/dev/fd"
    exec chroot "$0" /bin/bash -c "$1"'
  apart env -i HOME=/srv LANG=C.UTF-8 PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin \
    ${http_proxy:+http_proxy="$http_proxy"} ${https_proxy:+https_proxy="$https_proxy"} \
    bash -e -c "$mounts" "$system" "$1"
}

# make_bare: makes the minimal root, or ends the check with the reason why it cannot.
make_bare() {
  [ "$(id -u)" -eq 0 ] || skip "only the superuser can make a root file system"
  command -v apt-get >/dev/null || skip "this is not a Debian system"
  git rev-parse --verify --quiet HEAD >/dev/null || skip "this is not a clone"
  apart true 2>/dev/null || skip "the check cannot make its own mounts here"
  if ! command -v mmdebstrap >/dev/null && ! (need_packages bare) >/dev/null 2>&1; then
    skip "mmdebstrap cannot be installed"
  fi
  [ -n "$(sources)" ] || skip "apt has no source of Debian $release"
  trap remove EXIT
  remove
  mkdir -p "$bare"
  is_source_reached || skip "the package source cannot be reached"
  if ! make_root; then
    cat "$log"
    echo "The minimal root could not be made." >&2
    exit 1
  fi
}

remove() { rm -rf --one-file-system "$bare"; }

# type_documents FOLDER DOCUMENT...: types the commands of the documents of HEAD in a folder of the root.
type_documents() {
  local folder=$1 commands
  shift
  # The documents as committed, like the tree.
  mkdir -p "$bare/head"
  git archive HEAD "$@" | tar -x -C "$bare/head"
  commands=$(cd "$bare/head" && python3 "$root/scripts/document_commands.py" "$@")
  if ! in_root "set -e; cd '$folder'; $commands" >>"$log" 2>&1 </dev/null; then
    tail -n 100 "$log"
    echo "$* failed on a bare machine; all that was said: $log" >&2
    exit 1
  fi
}

# report SECONDS: prints each command with the seconds that it took.
report() {
  echo "$ mmdebstrap $release ($1 s)"
  awk '/^\$ # / { printf "%s (%s s)\n", command, $3 } /^\$ [^#]/ { command = $0 }' "$log"
}
