#!/bin/sh
# Builds the Debian package, hardened as Debian builds its own:
#
#   build-deb.sh [FOLDER]    build folder; out/package without
set -eu

root=$(CDPATH='' cd -- "$(dirname -- "$0")/.." && pwd)
build=${1:-"$root/out/package"}
"$root/scripts/install-deps.sh"
command -v dpkg-shlibdeps >/dev/null || {
  echo "build-deb: dpkg-shlibdeps is missing; install dpkg-dev" >&2
  exit 1
}
if command -v ccache >/dev/null; then
  export CMAKE_CXX_COMPILER_LAUNCHER=ccache CCACHE_BASEDIR="$root"
fi

# The build type says how much to optimise.
flags() {
  DEB_BUILD_MAINT_OPTIONS=hardening=+bindnow DEB_CXXFLAGS_MAINT_STRIP="-g -O2" \
    dpkg-buildflags --get "$1"
}
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release \
  -DCMAKE_INTERPROCEDURAL_OPTIMIZATION=ON -DSCRUBWELL_TESTS=OFF \
  -DSCRUBWELL_WERROR=OFF -DCMAKE_CXX_FLAGS="$(flags CXXFLAGS) $(flags CPPFLAGS)" \
  -DCMAKE_EXE_LINKER_FLAGS="$(flags LDFLAGS)" -DCMAKE_MODULE_LINKER_FLAGS="$(flags LDFLAGS)"
cmake --build "$build"
cd "$build"
cpack
