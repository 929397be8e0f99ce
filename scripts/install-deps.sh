#!/bin/sh
# Installs what is missing to build Scrubwell on Debian 12, and with --test what its tests need as
# well, with --fuzz what its fuzzer needs, with --windows what builds and runs it for Windows.
# Does nothing, and needs no rights, when everything is there.
set -eu

packages="cmake g++ libcli11-dev liblnk-dev libmsiecf-dev ninja-build nlohmann-json3-dev"
case "${1:-}" in
  '') ;;
  --test)
    # ccache shortens later builds; hivexml, reglookup and regfexport are the tests' independent
    # readers of hives, lnkinfo of shortcuts, msiecfexport of address files.
    packages="$packages ccache libgtest-dev libhivex-bin liblnk-utils libmsiecf-utils \
      libregf-utils ntfs-3g python3 reglookup xz-utils" ;;
  --fuzz) packages="$packages ccache clang libclang-rt-14-dev xz-utils" ;;
  --windows)
    "$(dirname -- "$0")/wine-install.sh"
    packages="$packages ccache g++-mingw-w64-i686-posix g++-mingw-w64-x86-64-posix googletest" ;;
  *) echo "usage: install-deps.sh [--test|--fuzz|--windows]" >&2; exit 2 ;;
esac

if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
  echo "install-deps: no Debian here; these packages are needed: $packages" >&2
  exit 0
fi

missing=""
for package in $packages; do
  status=$(dpkg-query -W -f='${Status}' "$package" 2>/dev/null || true)
  [ "$status" = "install ok installed" ] || missing="$missing $package"
done
[ -n "$missing" ] || exit 0

as_root=""
if [ "$(id -u)" -ne 0 ]; then
  command -v sudo >/dev/null || {
    echo "install-deps: run this as root once, or install:$missing" >&2
    exit 1
  }
  as_root="sudo"
fi
echo "Installing:$missing" >&2
log=$(mktemp)
trap 'rm -f "$log"' EXIT
# One source whose index can't be had need not be the one that is needed.
# shellcheck disable=SC2086  # a list of names, to be split
if ! { $as_root apt-get -q update || true
       $as_root env DEBIAN_FRONTEND=noninteractive apt-get -qy install --no-install-recommends \
         $missing; } >"$log" 2>&1 </dev/null; then
  tail -n 20 "$log" >&2
  echo "install-deps: the installation failed" >&2
  exit 1
fi
