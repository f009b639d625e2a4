#!/usr/bin/env bash
# Brings a Debian 12 machine to where this project builds: packages, Ruby 3.4, the triangulator.
# Everything that is not a Debian package of the machine's own suite goes under .deps/. A step that
# was done is not done again; a step that was broken off starts over. With the argument "fuzz" it also
# gets the compiler that the fuzz targets are built with; with "live" what the renderer's page draws with,
# and a browser for its tests.
set -euo pipefail

case "${1:-}" in
  "") extra=() ;;
  fuzz) extra=(clang libclang-rt-dev) ;;
  live) extra=(chromium) ;;
  *)
    echo "setup: '$1' is nothing that can be set up; 'fuzz' and 'live' are" >&2
    exit 2
    ;;
esac

root=$(cd "$(dirname "$0")/.." && pwd)
. "$root/scripts/common.sh"

packages=(
  g++ cmake make pkg-config dpkg-dev autoconf
  libboost1.81-dev libwxgtk3.2-dev libglm-dev
  nlohmann-json3-dev libcli11-dev libassimp-dev libtinygltf-dev libpng-dev libstb-dev
  libglu1-mesa-dev libosmesa6-dev
  libgtest-dev libgmock-dev libbenchmark-dev
  zlib1g-dev libffi-dev libyaml-dev
  assimp-testmodels "${extra[@]}"
)

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

# What the renderer's page draws with, and what drives a browser in its tests: .deps/node/node_modules.
install_node_packages() {
  local lock="$root/scripts/node/package-lock.json"
  cmp -s "$lock" "$deps/node/.complete" && return 0
  command -v npm >/dev/null || install_packages nodejs npm
  step "fetching the page's libraries (80 MB)"
  mkdir -p "$deps/node"
  cp "$root"/scripts/node/{package.json,package-lock.json,.npmrc} "$deps/node/"
  (cd "$deps/node" && quietly node-packages npm ci)
  cp "$lock" "$deps/node/.complete"
}

command -v apt-get >/dev/null || fail "this machine has no apt-get; the set-up is written for Debian 12"
install_packages "${packages[@]}"
install_ruby
install_earcut
[ "${1:-}" != live ] || install_node_packages
