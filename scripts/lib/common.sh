# Shared by the scripts of this folder, which source it first. They work from any directory: this file
# goes to the project's root.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."

# step TEXT: prints the next step, on standard error because a program's output is on standard output.
step() { printf '\033[1m==> %s\033[0m\n' "$*" >&2; }

die() {
  printf '%s\n' "$*" >&2
  exit 1
}

# logged LOG FUNCTION [ARGUMENT ...]: runs the function in a shell of its own, with its output in LOG.
# If it fails, prints the end of LOG and exits.
logged() {
  local log=$1
  shift
  "$@" >"$log" 2>&1 & # not in the condition itself, where a failing command ends nothing
  wait $! || die "$(tail -n 30 "$log")
$1 has failed. All its output: $log"
}

# require PROBE=PACKAGE ...: installs the Debian packages whose probe (a command, or a file's absolute
# path) is missing. Without apt, or without root or sudo, prints what is missing and exits.
require() {
  local need probe missing=()
  for need in "$@"; do
    probe=${need%%=*}
    if [[ $probe == /* ]]; then
      [[ -e $probe ]] || missing+=("${need#*=}")
    else
      command -v "$probe" >/dev/null || missing+=("${need#*=}")
    fi
  done
  ((${#missing[@]})) || return 0

  local as_root=()
  if ((EUID != 0)); then
    as_root=(sudo)
  fi
  if ! command -v apt-get >/dev/null || { ((EUID != 0)) && ! command -v sudo >/dev/null; }; then
    die "Please install these packages (Debian's names): ${missing[*]}"
  fi
  step "Installing ${missing[*]}"
  "${as_root[@]}" apt-get update -qq >&2
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get -o DPkg::Lock::Timeout=300 install -y -qq --no-install-recommends "${missing[@]}" >&2
}

# require_build_tools [PROBE=PACKAGE ...]: what every build needs, and these.
require_build_tools() {
  require cmake=cmake ninja=ninja-build g++=g++ \
    /usr/include/CLI/CLI.hpp=libcli11-dev /usr/include/nlohmann/json.hpp=nlohmann-json3-dev "$@"
}

# require_wheel_tools: what scripts/wheels needs.
require_wheel_tools() {
  local modules=/usr/lib/python3/dist-packages
  require cmake=cmake readelf=binutils $modules/build=python3-build \
    $modules/setuptools=python3-setuptools $modules/wheel=python3-wheel
}

# configure PRESET [CMAKE_ARGUMENT ...]: configures if there is no build folder or arguments are given.
configure() {
  local preset=$1
  shift
  if [[ ! -f build/$preset/build.ninja ]] || (($#)); then
    step "Configuring $preset"
    cmake --preset "$preset" "$@" >&2
  fi
}

# build PRESET [CMAKE_ARGUMENT ...]: configures and builds what has changed.
build() {
  configure "$@"
  step "Building $1"
  cmake --build --preset "$1" >&2
}
