#!/bin/sh
# Cross-builds for Windows and runs under Wine what needs Windows:
#
#   test-windows.sh                 both widths
#   test-windows.sh windows-i686    one of them
#   test-windows.sh --brief         the one that is delivered; of the other only what depends on
#                                   the width of the numbers
set -eu

root=$(CDPATH='' cd -- "$(dirname -- "$0")/.." && pwd)
presets="windows-i686 windows-x86_64"
brief=no
case "${1:-}" in
  '') ;;
  --brief) brief=yes ;;
  windows-i686 | windows-x86_64) presets=$1 ;;
  *) echo "usage: test-windows.sh [--brief|windows-i686|windows-x86_64]" >&2; exit 2 ;;
esac

is_brief() {
  [ "$brief" = yes ] && [ "$1" = windows-x86_64 ]
}

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
  if is_brief "$preset"; then
    cmake --build --preset "$preset" --target test_registry test_backends_windows
  else
    cmake --build --preset "$preset"
  fi
done

"$root/scripts/wine-prefix.sh"
trap '"$root/scripts/wine-prefix.sh" --stop' EXIT
failed=""
for preset in $presets; do
  only="."
  ! is_brief "$preset" || only="^(registry|backends_windows)$"
  ctest --preset "$preset" --no-tests=error -j "$(nproc)" -R "$only" || failed="$failed $preset"
done
echo "Windows tests: $(($(date +%s) - begin)) s"
[ -z "$failed" ] || { echo "test-windows: failed:$failed" >&2; exit 1; }
