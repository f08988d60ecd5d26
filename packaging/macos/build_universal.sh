#!/usr/bin/env bash
# Builds the programs for both architectures and merges them into build/macos-universal.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."

source tools/setup.sh

programs=(call-monitor call-monitor-doctor)
architectures=(arm64 x86_64)

for tool in lipo otool; do
  if ! command -v "$tool" >/dev/null; then
    echo "build_universal: $tool is missing; this needs a Mac with its command line tools" >&2
    exit 69
  fi
done
installMissing "${BUILD_PACKAGES[@]}"

for architecture in "${architectures[@]}"; do
  packaging/macos/build_libraries.sh "$architecture"
  cmake --preset "macos-$architecture"
  cmake --build --preset "macos-$architecture"
done

mkdir -p build/macos-universal
for program in "${programs[@]}"; do
  parts=()
  for architecture in "${architectures[@]}"; do
    parts+=("build/macos-$architecture/main/$program")
  done
  merged=build/macos-universal/$program
  lipo -create "${parts[@]}" -output "$merged"
  lipo "$merged" -verify_arch "${architectures[@]}"
  # Whoever gets the program has the system's libraries and no others. Those it always needs, so
  # that a list without any is no list.
  libraries=$(otool -L "$merged" | grep '^[[:space:]]') || {
    echo "build_universal: which libraries $merged needs cannot be told" >&2
    exit 1
  }
  if grep -vE '^[[:space:]]+(/usr/lib/|/System/)' <<<"$libraries" >&2; then
    echo "build_universal: $merged needs the libraries above, which only this machine has" >&2
    exit 1
  fi
  echo "$merged"
done
