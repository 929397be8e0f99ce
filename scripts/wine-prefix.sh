#!/bin/sh
# Makes the private Windows that the tests run in, and starts its server so that it stays:
#
#   wine-prefix.sh            once takes about 20 seconds, then nothing
#   wine-prefix.sh --fresh    makes it anew
#   wine-prefix.sh --stop     ends the server
#
# The user's folders in it are real folders and no drive leads out of it, so that a cleaner may do
# its worst there.
set -eu

here=$(CDPATH='' cd -- "$(dirname -- "$0")" && pwd)
# shellcheck source=/dev/null
. "$here/wine-env.sh"
stay_on_one_processor
ready="$SCRUBWELL_WINE_HOME/complete"

stop_server() {
  [ ! -d "$WINEPREFIX" ] || "$SCRUBWELL_WINE/wineserver64" -k >/dev/null 2>&1 </dev/null || true
}

make_folders_real() {
  for folder in "$WINEPREFIX"/drive_c/users/*/* "$WINEPREFIX"/drive_c/users/*/AppData/*/*; do
    if [ -L "$folder" ]; then
      rm "$folder"
      mkdir "$folder"
    fi
  done
  rm -f "$WINEPREFIX/dosdevices/z:" "$WINEPREFIX"/dosdevices/[d-y]:
}

make_prefix() {
  rm -rf "$SCRUBWELL_WINE_HOME"
  mkdir -p "$HOME"
  # Its processes must not hold the caller's output open.
  if ! "$SCRUBWELL_WINE/wine64" wineboot --init >"$HOME/wineboot.log" 2>&1 </dev/null; then
    echo "wine-prefix: wineboot failed, see $HOME/wineboot.log" >&2
    exit 1
  fi
  # What it changed is written when the server ends.
  "$SCRUBWELL_WINE/wineserver64" -w >/dev/null 2>&1 </dev/null
  make_folders_real
  # For tests that want one to themselves. Wine writes into a registry file that has several names,
  # so this one's must be files of their own.
  cp -al "$WINEPREFIX" "$SCRUBWELL_WINE_HOME/fresh"
  for file in "$SCRUBWELL_WINE_HOME/fresh"/*.reg; do
    rm "$file"
    cp -p "$WINEPREFIX/${file##*/}" "$file"
  done
  : >"$ready"
}

if [ ! -x "$SCRUBWELL_WINE/wine" ] || [ ! -x "$SCRUBWELL_WINE/wine64" ]; then
  echo "wine-prefix: Wine for both widths is missing; scripts/install-deps.sh --windows" >&2
  exit 1
fi
case "${1:-}" in
  --stop) stop_server; exit 0 ;;
  --fresh) stop_server; rm -f "$ready" ;;
  '') ;;
  *) echo "usage: wine-prefix.sh [--fresh|--stop]" >&2; exit 2 ;;
esac
[ -e "$ready" ] || make_prefix
"$SCRUBWELL_WINE/wineserver64" -p >/dev/null 2>&1 </dev/null || true  # there is one already
# The services of the private Windows start with its first program.
"$SCRUBWELL_WINE/wine64" cmd /c exit >/dev/null 2>&1 </dev/null
