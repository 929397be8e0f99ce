#!/bin/sh
# Builds the program as users run it and measures it: speed, memory, cost of a problem, growth.
# Prints each figure with its target, and fails when one is missed.
#   bench.sh [--only speed|per_problem|growth] [--runs N]
# The installations that it measures on stay in out/bench (some 400 MB).
set -eu

root=$(CDPATH='' cd -- "$(dirname -- "$0")" && pwd)
"$root/scripts/install-deps.sh" --test
build="$root/out/bench"
mkdir -p "$build"
if command -v ccache >/dev/null; then
  export CMAKE_CXX_COMPILER_LAUNCHER=ccache CCACHE_BASEDIR="$root"
fi
log="$build/build.log"
{ cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_INTERPROCEDURAL_OPTIMIZATION=ON -DSCRUBWELL_BENCH=ON \
    -DSCRUBWELL_TESTS=OFF &&
  cmake --build "$build" --target scrubwell make_installation; } >"$log" 2>&1 ||
  { tail -n 30 "$log" >&2; exit 1; }
exec python3 "$root/bench/measure.py" "$build" "$build/worlds" "$@"
