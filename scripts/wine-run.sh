#!/bin/sh
# Runs a Windows program under Wine, away from the user's desktop, home folder and files:
#
#   wine-run.sh PROGRAM.EXE [ARGUMENT...]
#
# The prefix is scripts/wine-prefix.sh's. The program has no input, unless SCRUBWELL_WINE_CONSOLE is
# set: then a terminal becomes its console. Exit status: the program's.
set -eu

here=$(CDPATH='' cd -- "$(dirname -- "$0")" && pwd)
# shellcheck source=/dev/null
. "$here/wine-env.sh"
stay_on_one_processor

program=$1
shift
# The machine field of the program's header says which of the two loaders it needs: 8664 is 64-bit.
header=$(od -An -tu4 -j60 -N4 "$program" | tr -d ' ')
machine=$(od -An -tx2 -j$((header + 4)) -N2 "$program" | tr -d ' ')
loader=wine
[ "$machine" = 8664 ] && loader=wine64
[ -n "${SCRUBWELL_WINE_CONSOLE:-}" ] || exec </dev/null
exec "$SCRUBWELL_WINE/$loader" "$program" "$@"
