#!/bin/sh
# Builds and runs all tests.
#   --no-windows  without those that are cross-built and run under Wine
#   --sanitize    with address and undefined-behaviour sanitizers, which Windows has none of
#   --data DIR    folder with real hives; the tests that need them are silent without it
set -eu

root=$(CDPATH='' cd -- "$(dirname -- "$0")" && pwd)
preset="test"
windows=yes
while [ $# -gt 0 ]; do
  case "$1" in
    --sanitize) preset="sanitize" windows=no ;;
    --no-windows) windows=no ;;
    --data)
      if [ $# -lt 2 ] || [ ! -d "$2" ]; then
        echo "test.sh: --data needs a folder" >&2
        exit 2
      fi
      SCRUBWELL_DATA=$(CDPATH='' cd -- "$2" && pwd)
      export SCRUBWELL_DATA
      shift ;;
    *) echo "usage: test.sh [--no-windows] [--sanitize] [--data DIR]" >&2; exit 2 ;;
  esac
  shift
done

"$root/scripts/install-deps.sh" --test
if [ "$windows" = yes ] && ! "$root/scripts/install-deps.sh" --windows; then
  echo "test.sh: what the tests for Windows need can't be installed; --no-windows leaves them out" >&2
  exit 1
fi
if command -v ccache >/dev/null; then
  export CMAKE_CXX_COMPILER_LAUNCHER=ccache CCACHE_BASEDIR="$root"
fi

cd "$root"
log=$(mktemp)
trap 'rm -f "$log"' EXIT
cmake --preset "$preset" >"$log" 2>&1 || { cat "$log" >&2; exit 1; }
cmake --build --preset "$preset"
ctest --preset "$preset" --no-tests=error -j "$(nproc)"
[ "$windows" = no ] || "$root/scripts/test-windows.sh" --brief
