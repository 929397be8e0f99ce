#!/bin/sh
# Builds Scrubwell and lets it scan the sample installation. Further arguments go to the scan:
#   ./run.sh --format json --lang de
set -eu

root=$(CDPATH='' cd -- "$(dirname -- "$0")" && pwd)
build="$root/build"

"$root/scripts/install-deps.sh"
if command -v ccache >/dev/null; then
  export CMAKE_CXX_COMPILER_LAUNCHER=ccache CCACHE_BASEDIR="$root"
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
trap 'exit 130' INT TERM

[ -f "$build/build.ninja" ] || echo "Building Scrubwell; the first time takes some minutes ..." >&2
if ! { cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DSCRUBWELL_TESTS=OFF -DSCRUBWELL_WERROR=OFF &&
       cmake --build "$build" --target scrubwell mksample; } >"$work/log" 2>&1; then
  tail -n 40 "$work/log" >&2
  echo "run.sh: the build failed" >&2
  exit 1
fi

"$build/mksample" "$root/samples" "$work/sample"
status=0
"$build/scrubwell" scan --windows "$work/sample/C" "$@" || status=$?
# The sample has problems on purpose: finding them is success.
[ "$status" -ne 1 ] || status=0
exit "$status"
