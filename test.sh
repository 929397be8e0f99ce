#!/bin/sh
# Builds and runs all tests.
#   --sanitize    with address and undefined-behaviour sanitizers
#   --data DIR    folder with real hives; the tests that need them are silent without it
set -eu

root=$(CDPATH='' cd -- "$(dirname -- "$0")" && pwd)
preset="test"
while [ $# -gt 0 ]; do
  case "$1" in
    --sanitize) preset="sanitize" ;;
    --data)
      if [ $# -lt 2 ] || [ ! -d "$2" ]; then
        echo "test.sh: --data needs a folder" >&2
        exit 2
      fi
      SCRUBWELL_DATA=$(CDPATH='' cd -- "$2" && pwd)
      export SCRUBWELL_DATA
      shift ;;
    *) echo "usage: test.sh [--sanitize] [--data DIR]" >&2; exit 2 ;;
  esac
  shift
done

"$root/scripts/install-deps.sh" --test
if command -v ccache >/dev/null; then
  export CMAKE_CXX_COMPILER_LAUNCHER=ccache CCACHE_BASEDIR="$root"
fi

cd "$root"
log=$(mktemp)
trap 'rm -f "$log"' EXIT
cmake --preset "$preset" >"$log" 2>&1 || { cat "$log" >&2; exit 1; }
cmake --build --preset "$preset"
ctest --preset "$preset" --no-tests=error -j "$(nproc)"
