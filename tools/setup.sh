# shellcheck shell=bash
# shellcheck disable=SC2034 # what is set here is used by those who source it
#
# What the commands at the root share: what has to be installed, and how the program is built.
#
# To be sourced by bash from the root of the repository. Everything here writes to standard error
# alone, because the standard output of `./run` belongs to the monitor's stream.

# The interpreter that sees the distribution's own Python packages, whatever stands first in PATH.
PYTHON=/usr/bin/python3

# What is needed to build the program and its unit tests.
BUILD_PACKAGES=(g++ clang-19 cmake ninja-build pkg-config libicu-dev liburiparser-dev
  nlohmann-json3-dev libgtest-dev libbenchmark-dev libpcre2-dev libsystemd-dev libxcb1-dev
  libpipewire-0.3-dev libpulse-dev)
# What clang needs besides to build it a second time.
SECOND_BUILD_PACKAGES=(libclang-rt-19-dev libc++-19-dev libc++abi-19-dev googletest)
# What checks the sources.
LINT_PACKAGES=(clang-format clang-tidy)
# What a private desktop with a browser consists of. Whoever watches a desktop of their own needs
# none of it.
DESKTOP_PACKAGES=(xvfb dbus at-spi2-core openbox chromium fonts-dejavu-core openssl python3
  python3-gi gir1.2-gtk-3.0 python3-websocket util-linux x11-utils xdotool iproute2 pipewire
  pipewire-bin pipewire-pulse wireplumber pulseaudio pulseaudio-utils)

# The same for a Mac, whose compiler is the system's own: what Homebrew calls it.
BREW_PACKAGES=(cmake ninja pkgconf icu4c uriparser nlohmann-json googletest google-benchmark pcre2)

# onMac: whether this is a Mac, whose desktop no other machine can bring up.
onMac() {
  [[ $(uname -s) == Darwin ]]
}

# installMissingOnMac: installs what is missing of BREW_PACKAGES.
installMissingOnMac() {
  local package missing=()
  if ! command -v brew >/dev/null; then
    echo "setup: no brew here (https://brew.sh); needed are: ${BREW_PACKAGES[*]}" >&2
    return 1
  fi
  for package in "${BREW_PACKAGES[@]}"; do
    brew list --versions "$package" >/dev/null 2>&1 || missing+=("$package")
  done
  if ((${#missing[@]})); then
    echo "setup: installing ${missing[*]}" >&2
    brew install "${missing[@]}" </dev/null >&2
  fi
}

# installMissing PACKAGE...: installs those of the packages that are not installed; on a Mac what the
# build needs, whatever is named. Another machine without apt-get gets a hint instead, and the step
# that misses something says so itself.
installMissing() {
  local package missing=()
  if onMac; then
    installMissingOnMac
    return
  fi
  if ! command -v apt-get >/dev/null; then
    echo "setup: no apt-get here; needed are: $*" >&2
    return 0
  fi
  for package in "$@"; do
    if [[ $(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null) != installed ]]; then
      missing+=("$package")
    fi
  done
  ((${#missing[@]})) || return 0

  local asRoot=()
  if ((EUID != 0)); then
    if ! command -v sudo >/dev/null; then
      echo "setup: neither root nor sudo; please install: ${missing[*]}" >&2
      return 1
    fi
    asRoot=(sudo)
  fi
  echo "setup: installing ${missing[*]}" >&2
  asRoot+=(env DEBIAN_FRONTEND=noninteractive apt-get -q -o DPkg::Lock::Timeout=300)
  "${asRoot[@]}" update </dev/null >&2 &&
    "${asRoot[@]}" install -y --no-install-recommends "${missing[@]}" </dev/null >&2
}

# processors: how many processors this machine has.
processors() {
  getconf _NPROCESSORS_ONLN
}

# buildPreset NAME [ARGUMENT...]: configures and builds one preset of CMakePresets.json; the further
# arguments go to the build.
buildPreset() {
  local name=$1
  shift
  if onMac; then
    # Homebrew keeps this one out of the places where libraries are looked for.
    local icu
    icu=$(brew --prefix icu4c) || return 1
    local -x PKG_CONFIG_PATH=$icu/lib/pkgconfig${PKG_CONFIG_PATH:+:$PKG_CONFIG_PATH}
  fi
  cmake --preset "$name" </dev/null >&2 &&
    cmake --build --preset "$name" -j "$(processors)" "$@" </dev/null >&2
}
