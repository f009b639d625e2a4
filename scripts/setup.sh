#!/usr/bin/env bash
# Brings a Debian 12 machine to where this project builds: packages, Ruby 3.4, the triangulator.
# Everything that is not a Debian package of the machine's own suite goes under .deps/. A step that
# was done is not done again; a step that was broken off starts over. With the argument "fuzz" it also
# gets the compiler that the fuzz targets are built with.
set -euo pipefail

case "${1:-}" in
  "") extra=() ;;
  fuzz) extra=(clang libclang-rt-dev) ;;
  *)
    echo "setup: '$1' is nothing that can be set up; 'fuzz' is" >&2
    exit 2
    ;;
esac

root=$(cd "$(dirname "$0")/.." && pwd)
deps="$root/.deps"
log="$deps/log"
mkdir -p "$log"

fail() {
  printf 'setup: %s\n' "$1" >&2
  exit 1
}

step() { printf 'setup: %s\n' "$1"; }

# What a log says of a failure: its first complaint, or else its last line.
complaint() { # file
  grep -m 1 -iE '(error|not found|failed|cannot|unable)' "$1" || tail -n 1 "$1"
}

# Runs a command with its output in a log file; a failure ends in one sentence that names the file.
quietly() { # name, command...
  local name=$1
  shift
  "$@" >"$log/$name.log" 2>&1 || fail "$name failed; its log $log/$name.log says: $(complaint "$log/$name.log")"
}

packages=(
  g++ cmake make pkg-config dpkg-dev autoconf
  libboost1.81-dev libwxgtk3.2-dev libglm-dev
  nlohmann-json3-dev libcli11-dev libassimp-dev libtinygltf-dev libpng-dev libstb-dev
  libglu1-mesa-dev libosmesa6-dev
  libgtest-dev libgmock-dev libbenchmark-dev
  zlib1g-dev libffi-dev libyaml-dev
  assimp-testmodels "${extra[@]}"
)

install_packages() {
  local missing=()
  for package in "${packages[@]}"; do
    dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
  done
  [ ${#missing[@]} -gt 0 ] || return 0
  [ "$(id -u)" = 0 ] ||
    fail "these Debian packages are missing and only root may install them: run 'apt-get install ${missing[*]}' as root, then this again"
  step "installing ${#missing[@]} Debian packages (about a minute)"
  export DEBIAN_FRONTEND=noninteractive
  quietly apt-update apt-get update
  quietly apt-install apt-get install -y --no-install-recommends "${missing[@]}"
}

# Sources of another suite, through an apt configuration of our own, so that the machine's own
# package choice stays as it is. The mirror is the one that the machine itself uses.
prepare_sources() {
  [ -f "$deps/apt/ready" ] && return 0
  step "reading the list of Debian's source packages (a few seconds)"
  local mirror keyring
  mirror=$(apt-get indextargets --format '$(SITE) $(RELEASE)' 'Created-By: Packages' |
    awk '$2 !~ /security|updates/ {print $1; exit}')
  [ -n "$mirror" ] || fail "apt on this machine knows no Debian mirror; add one to its sources"
  keyring=/usr/share/keyrings/debian-archive-keyring.gpg
  mkdir -p "$deps"/apt/{lists/partial,cache/archives/partial,etc}
  local suite
  for suite in bookworm trixie sid experimental; do
    printf 'deb-src [signed-by=%s] %s %s main\n' "$keyring" "$mirror" "$suite"
  done >"$deps/apt/etc/sources.list"
  cat >"$deps/apt/apt.conf" <<CONF
Dir::Etc::sourcelist "$deps/apt/etc/sources.list";
Dir::Etc::sourceparts "-";
Dir::State::lists "$deps/apt/lists";
Dir::Cache "$deps/apt/cache";
APT::Sandbox::User "";
Acquire::Languages "none";
CONF
  APT_CONFIG="$deps/apt/apt.conf" quietly source-lists apt-get update
  touch "$deps/apt/ready"
}

# Fetches and unpacks one source package into a folder of its own. A suite in motion lists versions
# whose files a mirror does not have (yet, or any more), so each listed one is tried, newest first.
fetch_source() { # package, folder
  local version versions
  export APT_CONFIG="$deps/apt/apt.conf"
  versions=$(apt-cache showsrc --only-source "$1" | awk '/^Version:/ {print $2}' | sort -rVu)
  [ -n "$versions" ] || fail "Debian's source list holds no package $1"
  for version in $versions; do
    rm -rf "$2"
    mkdir -p "$2"
    if (cd "$2" && apt-get source --only-source "$1=$version") >"$log/fetch-$1.log" 2>&1; then
      unset APT_CONFIG
      return 0
    fi
  done
  fail "no version of the source package $1 could be fetched; its log $log/fetch-$1.log says: $(complaint "$log/fetch-$1.log")"
}

install_ruby() {
  [ -x "$deps/ruby/bin/ruby" ] && [ -f "$deps/ruby/.complete" ] && return 0
  prepare_sources
  step "fetching Ruby 3.4 (25 MB)"
  fetch_source ruby3.4 "$deps/src/ruby"
  local source
  source=$(find "$deps/src/ruby" -mindepth 1 -maxdepth 1 -type d | head -n 1)
  step "building Ruby 3.4 (about three minutes on two cores)"
  rm -rf "$deps/ruby"
  (
    cd "$source"
    quietly ruby-configure ./configure --prefix="$deps/ruby" --enable-shared --disable-install-doc \
      --disable-yjit --disable-rjit --without-gmp
    quietly ruby-make make -j"$(nproc)"
    quietly ruby-install make install
  )
  "$deps/ruby/bin/ruby" -e 'exit RUBY_VERSION >= "3.4" ? 0 : 1' || fail "the Ruby that was built does not run"
  touch "$deps/ruby/.complete"
  rm -rf "$deps/src/ruby"
}

install_earcut() {
  [ -f "$deps/earcut/include/mapbox/earcut.hpp" ] && return 0
  prepare_sources
  step "fetching the polygon triangulator's header"
  fetch_source python-mapbox-earcut "$deps/src/earcut"
  local header
  header=$(find "$deps/src/earcut" -path '*mapbox/earcut.hpp' | head -n 1)
  [ -n "$header" ] || fail "the source package python-mapbox-earcut holds no mapbox/earcut.hpp"
  mkdir -p "$deps/earcut/include/mapbox"
  cp "$header" "$deps/earcut/include/mapbox/earcut.hpp.part"
  mv "$deps/earcut/include/mapbox/earcut.hpp.part" "$deps/earcut/include/mapbox/earcut.hpp"
  rm -rf "$deps/src/earcut"
}

command -v apt-get >/dev/null || fail "this machine has no apt-get; the set-up is written for Debian 12"
install_packages
install_ruby
install_earcut
