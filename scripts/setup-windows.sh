#!/usr/bin/env bash
# Gets what the Windows build needs, after the set-up of this machine's own: the cross compiler and
# Wine from Debian, and under .deps/windows/ wxWidgets, libpng and Ruby built for Windows, and a Wine
# prefix to run them in. A step that was done is not done again; a step that was broken off goes on
# where it stopped.
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
. "$root/scripts/common.sh"

host=x86_64-w64-mingw32
windows="$deps/windows"
export CC=$host-gcc-posix CXX=$host-g++-posix
jobs=$(nproc)

packages=(
  g++-mingw-w64-x86-64-posix wine wine64 libwine libz-mingw-w64-dev
  libboost1.81-dev libglm-dev nlohmann-json3-dev libstb-dev googletest zip binutils dpkg-dev
)

# Once a step is done its stamp is there, and it is not done again.
once() { # stamp, what is said before, command...
  local stamp="$windows/done/$1"
  [ -f "$stamp" ] && return 0
  [ -z "$2" ] || step "$2"
  shift 2
  ("$@")
  mkdir -p "$windows/done"
  touch "$stamp"
}

unpack() { # source package, folder, how the version starts
  prepare_sources
  fetch_source "$1" "$2.part" "${3:-}"
  rm -rf "$2"
  mv "$(find "$2.part" -mindepth 1 -maxdepth 1 -type d | head -n 1)" "$2"
  rm -rf "$2.part"
}

# The header libraries alone: the system's include folder as a whole would hide the cross compiler's.
link_headers() {
  mkdir -p "$windows/include"
  local name
  for name in boost glm nlohmann stb; do
    [ -d "/usr/include/$name" ] || fail "/usr/include/$name is missing"
    ln -sfn "/usr/include/$name" "$windows/include/$name"
  done
}

libpng_source="$windows/src/libpng"
build_libpng() {
  cd "$libpng_source"
  quietly windows-libpng-configure ./configure --host=$host --prefix="$windows/libpng" \
    --disable-shared --enable-static
  quietly windows-libpng-make make -j"$jobs" install-libLTLIBRARIES install-pkgincludeHEADERS \
    install-nodist_pkgincludeHEADERS
  rm -rf "$libpng_source"
}

# Ruby's Fiddle calls functions through it. A Ruby that was built before has no Fiddle.
libffi_source="$windows/src/libffi"
build_libffi() {
  cd "$libffi_source"
  quietly windows-libffi-configure ./configure --host=$host --prefix="$windows/libffi" \
    --disable-shared --enable-static --disable-docs
  quietly windows-libffi-make make -j"$jobs" install
  rm -rf "$libffi_source" "$windows"/done/ruby*
}

wx_source="$windows/src/wx"
configure_wx() {
  mkdir -p "$wx_source/build-windows"
  cd "$wx_source/build-windows"
  quietly windows-wx-configure ../configure --host=$host --prefix="$windows/wx" --disable-shared \
    --with-msw --without-zlib --without-libpng --without-libjpeg --without-libtiff --without-expat \
    --without-regex --without-liblzma --without-opengl --disable-compat30 --disable-precomp-headers \
    --disable-dataviewctrl --disable-treelist --disable-html --disable-xrc --disable-aui \
    --disable-ribbon --disable-propgrid --disable-richtext --disable-stc --disable-mediactrl \
    --disable-webview --disable-svg --disable-sockets --disable-backtrace --disable-dbghelp \
    CXXFLAGS="-O2 -fno-aggressive-loop-optimizations"
}
build_wx() {
  cd "$wx_source/build-windows"
  local archives
  archives=$(make -pn 2>/dev/null | grep -oE '^[^ :#]*libwx_(baseu|mswu_core)-[^ :]*\.a' | sort -u)
  [ -n "$archives" ] || fail "wxWidgets' makefile has no base and core archives"
  # shellcheck disable=SC2086
  quietly windows-wx-make make -j"$jobs" $archives
}
install_wx() {
  mkdir -p "$windows/wx/lib" "$windows/wx/include"
  cd "$wx_source/build-windows"
  cp lib/libwx_*.a "$windows/wx/lib/"
  cp -r ../include/wx "$windows/wx/include/"
  cp lib/wx/include/*/wx/setup.h "$windows/wx/include/wx/setup.h"
  rm -rf "$wx_source"
}

ruby_source="$windows/src/ruby"
configure_ruby() {
  cd "$ruby_source"
  quietly windows-ruby-configure ./configure --host=$host --build=x86_64-linux-gnu \
    --prefix="$windows/ruby" --with-baseruby="$deps/ruby/bin/ruby" --enable-shared \
    --with-libffi-dir="$windows/libffi" --disable-install-doc --disable-yjit --disable-rjit \
    --without-gmp \
    --with-out-ext='-test-/*,openssl,psych,readline,zlib,win32ole,io/console,pty,syslog,socket'
}
make_ruby() { (cd "$ruby_source" && quietly windows-ruby-program make -j"$jobs" miniruby.exe ruby.exe); }
# Extensions find the libraries of the other system alone.
make_extensions() {
  cd "$ruby_source"
  PKG_CONFIG_LIBDIR="$windows/libffi/lib/pkgconfig" quietly windows-ruby-extensions make -j"$jobs" exts
}
install_ruby() {
  cd "$ruby_source"
  # The whole `make install` would fetch Ruby's bundled gems.
  quietly windows-ruby-install make install-bin install-lib install-ext install-arch install-comm
  cp -r include/. "$(echo "$windows"/ruby/include/ruby-3.*)"
  mkdir -p "$windows/ruby/lib/ruby/site_ruby"
  # The tests' framework is one of those, and this machine's Ruby has it.
  cp -r "$deps"/ruby/lib/ruby/gems/*/gems/minitest-*/lib/* "$windows"/ruby/lib/ruby/site_ruby/
  local library
  for library in libssp-0.dll libwinpthread-1.dll; do
    cp "$(find /usr/lib/gcc/$host/*-posix /usr/$host/lib -name $library | head -n 1)" "$windows/ruby/bin/" ||
      fail "the cross compiler has no $library"
  done
  rm -rf "$ruby_source"
}

# The text of the one licence that no installed package brings.
fetch_licences() {
  unpack python-mapbox-earcut "$windows/src/earcut"
  mkdir -p "$windows/licences"
  cp "$windows/src/earcut/debian/copyright" "$windows/licences/earcut"
  rm -rf "$windows/src/earcut"
}

# The only thing that Boost asks of a system and Wine does not have is when it was started.
make_prefix() {
  (
    export WINEPREFIX="$windows/prefix" WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
    quietly wine-prefix wineboot -i
    quietly wine-registry wine reg add \
      'HKLM\SYSTEM\CurrentControlSet\Control\Session Manager\Memory Management\PrefetchParameters' \
      /v BootId /t REG_DWORD /d 1 /f
    # Windows without a screen: nothing is shown, but a message box can be answered.
    quietly wine-screen wine reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f
    wineserver -w
  )
}

# One function, so that the shell has read all of it before it starts.
main() {
  install_packages "${packages[@]}"
  mkdir -p "$windows/src"
  link_headers
  once libpng-source "fetching libpng (1.5 MB)" unpack libpng1.6 "$libpng_source"
  once libpng "building libpng for Windows (half a minute)" build_libpng
  once wx-source "fetching wxWidgets (25 MB)" unpack wxwidgets3.2 "$wx_source" 3.2.2
  once wx-configured "configuring wxWidgets for Windows (a quarter of a minute)" configure_wx
  once wx-built "building wxWidgets for Windows, base and core (four minutes on two cores)" build_wx
  once wx "" install_wx
  once libffi-source "fetching libffi (1.5 MB)" unpack libffi "$libffi_source" 3.4.4
  once libffi "building libffi for Windows (half a minute)" build_libffi
  once ruby-source "fetching Ruby (25 MB)" unpack ruby3.4 "$ruby_source"
  once ruby-configured "configuring Ruby for Windows (a minute)" configure_ruby
  once ruby-program "building Ruby for Windows (three and a half minutes)" make_ruby
  once ruby-extensions "building Ruby's own extensions (three and a half minutes)" make_extensions
  once ruby "" install_ruby
  once licences "fetching the triangulator's licence (a few seconds)" fetch_licences
  once prefix "making a Wine prefix (a few seconds)" make_prefix
}
main
