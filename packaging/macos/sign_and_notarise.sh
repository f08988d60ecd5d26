#!/usr/bin/env bash
# Signs programs for distribution outside the App Store and has them notarised. See usage below.
set -euo pipefail

usage() {
  cat <<'TEXT'
usage: sign_and_notarise.sh --identity IDENTITY [--keychain-profile PROFILE] PROGRAM...

Signs each program in place: hardened runtime, secure timestamp, no entitlements. IDENTITY names a
"Developer ID Application" certificate of the keychain. With PROFILE, a profile that
`xcrun notarytool store-credentials PROFILE` has kept, the signed programs are then notarised, which
waits for the answer.

Status: 0 when all is done, 64 for wrong arguments, 66 for a program that is not there, 69 for a tool
that is missing, 1 when signing or notarising failed.
TEXT
}

fail() {
  echo "sign_and_notarise: $2" >&2
  exit "$1"
}

identity=
profile=
programs=()
while (($#)); do
  case $1 in
    -h | --help)
      usage
      exit 0
      ;;
    --identity | --keychain-profile)
      (($# > 1)) || fail 64 "$1 needs a value"
      if [[ $1 == --identity ]]; then identity=$2; else profile=$2; fi
      shift 2
      ;;
    -*)
      usage >&2
      exit 64
      ;;
    *)
      programs+=("$1")
      shift
      ;;
  esac
done
if [[ -z $identity ]] || ((${#programs[@]} == 0)); then
  usage >&2
  exit 64
fi

# Before anything is changed, so that a run is not left half-way for want of a tool.
needed=(codesign)
if [[ -n $profile ]]; then needed+=(xcrun ditto); fi
for tool in "${needed[@]}"; do
  command -v "$tool" >/dev/null ||
    fail 69 "$tool is missing; this needs a Mac with its command line tools (xcode-select --install)"
done
if [[ -n $profile ]] && ! xcrun --find notarytool >/dev/null 2>&1; then
  fail 69 "notarytool is missing; it comes with Xcode 13 and later"
fi
for program in "${programs[@]}"; do
  [[ -f $program ]] || fail 66 "there is no program at $program"
done

for program in "${programs[@]}"; do
  codesign --force --options runtime --timestamp \
    --identifier "ai.corvana.desktop.$(basename "$program")" --sign "$identity" "$program" ||
    fail 1 "$program could not be signed"
  codesign --verify --strict --verbose=2 "$program" ||
    fail 1 "the signature of $program is not valid"
done

if [[ -z $profile ]]; then
  echo "sign_and_notarise: signed; not notarised, because no --keychain-profile was given" >&2
  exit 0
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/programs"
cp -p "${programs[@]}" "$work/programs/"
ditto -c -k "$work/programs" "$work/programs.zip"
xcrun notarytool submit "$work/programs.zip" --keychain-profile "$profile" --wait \
  --output-format json | tee "$work/answer" ||
  fail 1 "the programs could not be sent, or were refused"
# The tool's status tells that an answer came, not that it was a yes.
grep -qE '"status" *: *"Accepted"' "$work/answer" ||
  fail 1 "the programs were not accepted; xcrun notarytool log tells why"
