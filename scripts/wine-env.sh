# shellcheck shell=sh disable=SC2034,SC2154
# Sourced by the other wine scripts, with $here their folder: where the private Windows lies, and
# nothing of the user's. SCRUBWELL_WINE_HOME may name another folder for it.
if [ -z "${SCRUBWELL_WINE_HOME:-}" ]; then
  SCRUBWELL_WINE_HOME=$(dirname -- "$here")/out/wine
fi
export SCRUBWELL_WINE_HOME
# The loaders themselves: the distribution's wrappers look at what else is installed.
SCRUBWELL_WINE=/usr/lib/wine
export WINEPREFIX="$SCRUBWELL_WINE_HOME/prefix"
export WINEARCH=win64
export WINEDEBUG="${WINEDEBUG:--all}"
export WINEDLLOVERRIDES="mscoree=;mshtml=;winemenubuilder.exe=d"
export HOME="$SCRUBWELL_WINE_HOME/home"
unset DISPLAY WAYLAND_DISPLAY XDG_RUNTIME_DIR

# Each call of a Windows program is a message to the server and its answer. Between two processors of
# a virtual machine each of them waits for a wake-up: everything takes up to ten times as long as on
# one.
stay_on_one_processor() {
  taskset -cp "$(taskset -cp $$ | sed 's/.*: //; s/[,-].*//')" $$ >/dev/null || true
}
