#!/usr/bin/env bash
# Builds the libraries that the program is linked with as static ones of one architecture, from the
# sources that Homebrew fetches: its own binaries are of this machine's architecture and need this
# machine's system version.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."

# As in CMakePresets.json and Info.plist.
minimumSystem=13.0

usage() {
  cat <<'TEXT'
usage: packaging/macos/build_libraries.sh arm64|x86_64

Leaves the libraries in build/macos-libraries/ARCHITECTURE, where the preset macos-ARCHITECTURE
looks for them. Does nothing when they are there.
TEXT
}

case "${1-}" in
  arm64 | x86_64) architecture=$1 ;;
  -h | --help)
    usage
    exit 0
    ;;
  *)
    usage >&2
    exit 64
    ;;
esac
for tool in brew cmake ninja make xcrun; do
  if ! command -v "$tool" >/dev/null; then
    echo "build_libraries: $tool is missing" >&2
    exit 69
  fi
done

prefix=$PWD/build/macos-libraries/$architecture
work=$PWD/build/macos-libraries/work
if [[ -e $prefix/complete ]]; then
  exit 0
fi
processors=$(getconf _NPROCESSORS_ONLN)
flags="-arch $architecture -mmacosx-version-min=$minimumSystem -O2"

# unpackSource FORMULA DIRECTORY: the formula's source archive, without its top directory.
unpackSource() {
  brew fetch --build-from-source "$1" >&2
  rm -rf "$2"
  mkdir -p "$2"
  tar -xf "$(brew --cache --build-from-source "$1")" -C "$2" --strip-components 1
}

# Its data are made by tools of its own, which have to run here; a build for the other architecture
# takes them from a build for this one.
buildIcu() {
  local source=$work/icu native=$work/icu-native target=$work/icu-$architecture cross=()
  unpackSource icu4c "$source"
  # The archive may hold the whole project, or the sources in a directory of their own.
  [[ -d $source/icu4c ]] && source=$source/icu4c
  if [[ $(uname -m) != "$architecture" ]]; then
    if [[ ! -e $native/complete ]]; then
      mkdir -p "$native"
      (cd "$native" && "$source/source/configure" --disable-samples --disable-tests &&
        make -j "$processors" && touch complete)
    fi
    cross=("--host=$architecture-apple-darwin" "--with-cross-build=$native")
  fi
  rm -rf "$target"
  mkdir -p "$target"
  # An older bash takes an empty list for an unset one.
  (cd "$target" && CFLAGS=$flags CXXFLAGS="$flags -std=c++17" "$source/source/configure" \
    "--prefix=$prefix" --enable-static --disable-shared --disable-samples --disable-tests \
    --disable-extras --disable-icuio ${cross[@]+"${cross[@]}"} &&
    make -j "$processors" && make install)
}

buildUriparser() {
  local source=$work/uriparser target=$work/uriparser-$architecture
  unpackSource uriparser "$source"
  cmake -S "$source" -B "$target" -G Ninja -DCMAKE_BUILD_TYPE=Release \
    "-DCMAKE_INSTALL_PREFIX=$prefix" "-DCMAKE_OSX_ARCHITECTURES=$architecture" \
    "-DCMAKE_OSX_DEPLOYMENT_TARGET=$minimumSystem" -DBUILD_SHARED_LIBS=OFF \
    -DURIPARSER_BUILD_DOCS=OFF -DURIPARSER_BUILD_TESTS=OFF -DURIPARSER_BUILD_TOOLS=OFF
  cmake --build "$target"
  cmake --install "$target"
}

mkdir -p "$work"
buildIcu
buildUriparser
touch "$prefix/complete"
