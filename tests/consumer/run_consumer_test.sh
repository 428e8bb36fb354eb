#!/bin/sh
# Installs the built qz into a temporary prefix, then configures, builds and
# runs tests/consumer against it the way another project would: with the
# installed toolchain file, find_package(qz 0.1) and the installed Wine
# runner; one program places its DLLs with TARGET_RUNTIME_DLLS alone, the
# other with qz_copy_runtime_dlls. The consumer asks for C++14, which qz::qz must lift to C++17.
# Usage: run_consumer_test.sh <qz build folder>
set -eu
build=$1
source_dir=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix
package=$prefix/lib/cmake/qz

cmake --install "$build" --prefix "$prefix" >/dev/null
cmake -DVERSION_FILE="$package/qzConfigVersion.cmake" -DWANTED=0.1 -DEXPECT=TRUE -P "$source_dir/check_version.cmake"
cmake -DVERSION_FILE="$package/qzConfigVersion.cmake" -DWANTED=2.0 -DEXPECT=FALSE -P "$source_dir/check_version.cmake"

cmake -S "$source_dir" -B "$work/build" -G Ninja -DCMAKE_BUILD_TYPE=Release \
  -DCMAKE_TOOLCHAIN_FILE="$package/mingw-w64-posix.cmake" -DCMAKE_PREFIX_PATH="$prefix" \
  -DCMAKE_CXX_STANDARD=14 >/dev/null
cmake --build "$work/build" >/dev/null
expected="consumer works (42)"
for program in standard short; do
  folder=$work/build/$program
  for dll in qz.dll libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll; do
    [ -f "$folder/$dll" ] || { echo "$dll was not put beside $program.exe"; exit 1; }
  done
  output=$("$package/wine-run" "$folder/$program.exe" | tr -d '\r')
  if [ "$output" != "$expected" ]; then
    echo "$program.exe printed '$output', expected '$expected'"
    exit 1
  fi
done
echo "an installed qz builds and runs in another project, its DLLs placed either way"
