# bash completion for scrubwell. Categories, kinds and sessions are asked of the program itself, so
# that they are those of the installed version.

_scrubwell_options() {
  local target="--windows --user --drive"
  local choice="--plugins --exclude"
  case "$1" in
    scan) echo "$target $choice --kind --filter --since --fail-on --all --details --limit --format
                --output" ;;
    explain) echo "$target $choice --format --output" ;;
    reg) echo "$target --view --key --format" ;;
    clean) echo "$target $choice --kind --filter --all --select --dry-run --yes --until-clean
                 --backup --format --output" ;;
    undo) echo "$target --item --list --export --backup --format" ;;
    recover) echo "$target --backup --format" ;;
    sessions) echo "--keep --older-than --dry-run --yes --backup --format" ;;
    ignore) echo "$target --plugins --machine --reason --backup --format" ;;
    plugins) echo "--kinds" ;;
    '') echo "--version" ;;
  esac
  case "$1" in plugins | '') ;; *) echo "--json-valid" ;; esac
  echo "--lang --help"
}

# Words that may follow; the part of the list before the last comma stays as it is.
_scrubwell_list() {
  local done=""
  case "$current" in *,*) done="${current%,*}," ;; esac
  mapfile -t COMPREPLY < <(compgen -P "$done" -W "$1" -- "${current##*,}")
  compopt -o nospace 2>/dev/null || true
}

_scrubwell_words() {
  mapfile -t COMPREPLY < <(compgen -W "$1" -- "$current")
}

_scrubwell_files() {
  compopt -o filenames 2>/dev/null
  mapfile -t COMPREPLY < <(compgen "$1" -- "$current")
}

_scrubwell_kinds() {
  local id rest
  while read -r id rest; do
    case "$id" in
      [A-Z]*) category=$id ;;
      *) echo "$category:$id" ;;
    esac
  done < <("$program" plugins --kinds --lang en 2>/dev/null)
}

# The value of the option $1, for the command $2; fails when that option takes none.
_scrubwell_value() {
  local formats="text json"
  case "$1" in
    --windows | --backup) _scrubwell_files -d ;;
    --since | --output | --export) _scrubwell_files -f ;;
    --plugins | --exclude)
      _scrubwell_list "$("$program" plugins --lang en 2>/dev/null | cut -d ' ' -f 1)" ;;
    --kind)
      local category=""
      _scrubwell_words "$(_scrubwell_kinds)"
      # A colon is a word of its own to bash, so only what follows it is put in.
      case "$current" in *:*) COMPREPLY=("${COMPREPLY[@]#*:}") ;; esac ;;
    --format)
      [ "$2" != scan ] || formats="$formats jsonl csv html sarif"
      _scrubwell_words "$formats" ;;
    --fail-on) _scrubwell_words "new any none" ;;
    --lang) _scrubwell_words "de en" ;;
    --view) _scrubwell_words "32 64" ;;
    --key) _scrubwell_words "HKLM HKCU HKCR HKU HKCC" ;;
    --user) [ "$2" != scan ] || _scrubwell_words "all" ;;
    --drive)
      # "=" is a word of its own to bash too.
      case "$current" in *=*) current=${current#*=}; _scrubwell_files -d ;; esac ;;
    --filter | --limit | --select | --item | --reason | --keep | --older-than) ;;
    *) return 1 ;;
  esac
}

# The words that are neither options nor their values, in $words.
_scrubwell() {
  local program=${COMP_WORDS[0]} commands="scan explain reg clean undo recover sessions ignore plugins"
  local line=${COMP_LINE:0:COMP_POINT} current="" option="" word
  local -a typed words=()
  COMPREPLY=()
  # bash splits at "=" and ":", which lie inside of our words.
  read -ra typed <<<"$line"
  case "$line" in
    *[[:space:]]) ;;
    *) current=${typed[-1]}; unset 'typed[-1]' ;;
  esac
  for word in "${typed[@]:1}"; do
    if [ -n "$option" ]; then
      option=""
    else
      case "$word" in
        --*=* | --help | -h | --version | --all | --details | --dry-run | --yes | --until-clean | \
          --list | --machine | --kinds) ;;
        -*) option=$word ;;
        *) words+=("$word") ;;
      esac
    fi
  done
  local command=${words[0]:-}

  if [ -z "$option" ]; then
    case "$current" in
      --*=*)
        option=${current%%=*}
        current=${current#*=} ;;
    esac
  fi
  if [ -n "$option" ] && _scrubwell_value "$option" "$command"; then return; fi
  case "$current" in
    -*)
      _scrubwell_words "$(_scrubwell_options "$command")"
      return ;;
  esac
  case "$command:${#words[@]}" in
    :0) _scrubwell_words "$commands" ;;
    ignore:1) _scrubwell_words "add list remove" ;;
    sessions:1) _scrubwell_words "list prune" ;;
    scan:1 | clean:1 | recover:1 | explain:2) _scrubwell_files -d ;;
    reg:1) _scrubwell_words "find HKLM HKCU HKCR HKU HKCC" ;;
    undo:1)
      _scrubwell_words "$("$program" undo --list --lang en 2>/dev/null | grep -o '^[0-9][^ ]*')" ;;
  esac
}

complete -F _scrubwell scrubwell
