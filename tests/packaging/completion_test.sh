#!/bin/bash
# Completes lines and compares: completion_test.sh PROGRAM SOURCES
# A row is what was typed, "|", and what is offered, sorted; "..." at its end stands for more.
set -u

program=$1
# shellcheck source=/dev/null
source "$2/packaging/scrubwell.bash"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/here/disk" "$work/state"
cd "$work/here" || exit 1
touch last.json
export XDG_STATE_HOME="$work/state"

failed=0
while IFS='|' read -r typed expected; do
  COMP_LINE=$typed COMP_POINT=${#typed} COMP_WORDS=("$program") COMPREPLY=()
  _scrubwell 2>"$work/said"
  offered=$(printf '%s\n' "${COMPREPLY[@]}" | LC_ALL=C sort | paste -sd ' ')
  case "$expected" in
    *...) [ "${offered#"${expected%...}"}" != "$offered" ] ;;
    *) [ "$offered" = "$expected" ] ;;
  esac || { echo "'$typed' offers '$offered', not '$expected'"; failed=1; }
  [ ! -s "$work/said" ] || { cat "$work/said"; failed=1; }
done <<'ROWS'
scrubwell s|scan sessions
scrubwell --lang de |clean explain ignore plugins recover reg scan sessions undo
scrubwell scan |disk
scrubwell sessions |list prune
scrubwell sessions prune --k|--keep
scrubwell --lang |de en
scrubwell --v|--version
scrubwell scan --fa|--fail-on
scrubwell scan --fail-on |any new none
scrubwell scan --fail-on=n|new none
scrubwell scan --format s|sarif
scrubwell clean --format |json text
scrubwell scan --windows |disk
scrubwell scan --windows=d|disk
scrubwell scan --since |disk last.json
scrubwell scan --plugins |ActiveXCOM AppMRU AppPaths ...
scrubwell scan --plugins Fonts,S|Fonts,SharedFiles Fonts,SoftwareInstalled Fonts,Sounds Fonts,SystemAddOn
scrubwell scan --exclude OD|ODBC
scrubwell scan --kind Fon|Fonts:1 ...
scrubwell scan --kind Fonts:|1 ...
scrubwell scan --kind SharedFiles:|1
scrubwell scan --drive E=d|disk
scrubwell scan --user a|all
scrubwell clean --user a|
scrubwell scan --filter |
scrubwell scan --details --al|--all
scrubwell ignore |add list remove
scrubwell ignore --windows disk a|add
scrubwell ignore add --ma|--machine
scrubwell reg f|find
scrubwell reg HKLM --view |32 64
scrubwell undo |
scrubwell plugins --k|--kinds
scrubwell nonsense --l|--lang
ROWS
exit $failed
