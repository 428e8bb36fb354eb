# Shared by scripts/test and scripts/demo: installs the cross tools when they
# are missing, prepares the Wine prefix once, and configures and builds qz.
# Source it; it leaves QZ_ROOT and QZ_BUILD set.
set -euo pipefail

QZ_ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
QZ_BUILD=${QZ_BUILD:-$QZ_ROOT/build}

qz_log() { printf '== %s\n' "$*" >&2; }

qz_install_tools() {
  local missing=()
  command -v x86_64-w64-mingw32-g++-posix >/dev/null || missing+=(g++-mingw-w64-x86-64-posix)
  command -v wine >/dev/null || missing+=(wine)
  [ -x /usr/lib/wine/wine64 ] || missing+=(wine64)
  command -v cmake >/dev/null || missing+=(cmake)
  command -v ninja >/dev/null || missing+=(ninja-build)
  [ -f /usr/src/googletest/CMakeLists.txt ] || missing+=(googletest)
  [ ${#missing[@]} -eq 0 ] && return 0
  qz_log "installing ${missing[*]}"
  local sudo=
  [ "$(id -u)" -eq 0 ] || sudo=sudo
  export DEBIAN_FRONTEND=noninteractive
  $sudo apt-get update -qq
  $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

qz_prepare_wine() {
  . "$QZ_ROOT/scripts/wine-env"
  if [ ! -f "$WINEPREFIX/system.reg" ]; then
    qz_log "preparing the Wine prefix $WINEPREFIX"
    mkdir -p "$(dirname "$WINEPREFIX")"
    wineboot -i >/dev/null 2>&1 || true
    wineserver -w || true
  fi
}

qz_build() {
  if [ ! -f "$QZ_BUILD/build.ninja" ]; then
    cmake -S "$QZ_ROOT" -B "$QZ_BUILD" -G Ninja \
      -DCMAKE_TOOLCHAIN_FILE="$QZ_ROOT/cmake/mingw-w64-posix.cmake" >/dev/null
  fi
  cmake --build "$QZ_BUILD" "$@"
}

qz_install_tools
qz_prepare_wine
