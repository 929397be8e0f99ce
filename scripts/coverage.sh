#!/bin/sh
# Runs the tests and prints which lines of the package they reach, file by file; with --lines also
# those that they don't.
#   coverage.sh [--lines] [FOLDER...]    folders below src; registry, framework and plugins without
set -eu

root=$(CDPATH='' cd -- "$(dirname -- "$0")/.." && pwd)
"$root/scripts/install-deps.sh" --test
build="$root/out/coverage"
mkdir -p "$build"
if command -v ccache >/dev/null; then
  export CMAKE_CXX_COMPILER_LAUNCHER=ccache CCACHE_BASEDIR="$root"
fi
log="$build/build.log"
{ cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug \
    -DCMAKE_CXX_FLAGS_DEBUG="-O0 --coverage" &&
  cmake --build "$build"; } >"$log" 2>&1 || { tail -n 30 "$log" >&2; exit 1; }
find "$build" -name '*.gcda' -delete
ctest --test-dir "$build" -j "$(nproc)" >"$build/tests.log" 2>&1 ||
  { tail -n 30 "$build/tests.log" >&2; exit 1; }
exec python3 "$root/scripts/coverage.py" "$root" "$build" "$@"
