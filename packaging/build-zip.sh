#!/bin/sh
# Builds the archive for Windows with the 32-bit program, which sees both views of the registry:
#
#   build-zip.sh [FOLDER]    build folder; out/package-windows without
set -eu

root=$(CDPATH='' cd -- "$(dirname -- "$0")/.." && pwd)
build=${1:-"$root/out/package-windows"}
"$root/scripts/install-deps.sh"
"$root/scripts/install-deps.sh" --windows
if command -v ccache >/dev/null; then
  export CMAKE_CXX_COMPILER_LAUNCHER=ccache CCACHE_BASEDIR="$root"
fi

cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DSCRUBWELL_TESTS=OFF \
  -DSCRUBWELL_WERROR=OFF -DCMAKE_TOOLCHAIN_FILE="$root/cmake/toolchains/windows-i686.cmake"
cmake --build "$build" --target scrubwell scrubwell_package
cd "$build"
cpack
