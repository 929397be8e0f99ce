#!/bin/sh
# Cross-builds for Windows and runs under Wine what needs Windows:
#
#   test-windows.sh                 both widths
#   test-windows.sh windows-i686    one of them
set -eu

root=$(CDPATH='' cd -- "$(dirname -- "$0")/.." && pwd)
case "${1:-}" in
  '') presets="windows-i686 windows-x86_64" ;;
  windows-i686 | windows-x86_64) presets=$1 ;;
  *) echo "usage: test-windows.sh [windows-i686|windows-x86_64]" >&2; exit 2 ;;
esac

begin=$(date +%s)
"$root/scripts/install-deps.sh" --test
"$root/scripts/install-deps.sh" --windows
if command -v ccache >/dev/null; then
  export CMAKE_CXX_COMPILER_LAUNCHER=ccache CCACHE_BASEDIR="$root"
fi

cd "$root"
mkdir -p out
log="$root/out/windows-configure.log"
# What the running Windows shows is compared with what these read from outside.
cmake --preset test >"$log" 2>&1 || { cat "$log" >&2; exit 1; }
cmake --build --preset test --target scrubwell wineprefix2hives
for preset in $presets; do
  cmake --preset "$preset" >"$log" 2>&1 || { cat "$log" >&2; exit 1; }
  cmake --build --preset "$preset"
done

"$root/scripts/wine-prefix.sh"
trap '"$root/scripts/wine-prefix.sh" --stop' EXIT
failed=""
for preset in $presets; do
  ctest --preset "$preset" --no-tests=error -j "$(nproc)" || failed="$failed $preset"
done
echo "Windows tests: $(($(date +%s) - begin)) s"
[ -z "$failed" ] || { echo "test-windows: failed:$failed" >&2; exit 1; }
