#!/bin/sh
# Fuzzes every target for SECONDS (60), one after another, with address and undefined-behaviour
# sanitizers; says one line a target, and fails when there was a finding.
#   fuzz.sh [--only TARGET] [SECONDS]
# With SCRUBWELL_DATA set its files join the seeds. What was learnt stays in out/fuzz/corpus, and an
# input that broke a target in out/fuzz/findings.
set -eu

root=$(CDPATH='' cd -- "$(dirname -- "$0")" && pwd)
only=""
seconds=60
while [ $# -gt 0 ]; do
  case "$1" in
    --only) only=${2:?fuzz.sh: --only needs a target}; shift ;;
    ''|*[!0-9]*) echo "usage: fuzz.sh [--only TARGET] [SECONDS]" >&2; exit 2 ;;
    *) seconds=$1 ;;
  esac
  shift
done

"$root/scripts/install-deps.sh" --fuzz
build="$root/out/fuzz"
mkdir -p "$build"
if command -v ccache >/dev/null; then
  export CMAKE_CXX_COMPILER_LAUNCHER=ccache CCACHE_BASEDIR="$root"
fi
log="$build/build.log"
{ cmake -S "$root" -B "$build" -G Ninja -DCMAKE_CXX_COMPILER=clang++ \
    -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-O1 -g1" \
    -DSCRUBWELL_FUZZ=ON -DSCRUBWELL_TESTS=OFF &&
  cmake --build "$build" --target fuzz_all; } >"$log" 2>&1 || { tail -n 30 "$log" >&2; exit 1; }

"$build/fuzz/fuzz_seeds" "$root/samples" "$build/seeds"

# Copies the files of the data folder that a target can read.
add_data() {
  [ -n "${SCRUBWELL_DATA:-}" ] || return 0
  case "$1" in
    hive)
      for file in "$SCRUBWELL_DATA"/hives/*.xz; do
        # Large ones only slow the fuzzer down.
        [ "$(xz -dc "$file" | head -c 600000 | wc -c)" -lt 600000 ] || continue
        xz -dc "$file" >"$2/$(basename "$file" .xz)"
      done ;;
    job|lnk) cp "$SCRUBWELL_DATA/artefacts/$1"/*."$1" "$2/" ;;
    msiecf) cp "$SCRUBWELL_DATA"/artefacts/index.dat/* "$2/" ;;
  esac
}

failed=0
for folder in "$build"/seeds/*/; do
  target=$(basename "$folder")
  [ -z "$only" ] || [ "$only" = "$target" ] || continue
  corpus="$build/corpus/$target"
  findings="$build/findings/$target"
  mkdir -p "$corpus" "$findings"
  cp "$folder"* "$corpus/"
  add_data "$target" "$corpus"
  begin=$(date +%s)
  status=0
  "$build/fuzz/fuzz_$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
    -print_final_stats=1 -artifact_prefix="$findings/" "$corpus" >"$build/$target.log" 2>&1 ||
    status=$?
  runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$build/$target.log")
  took=$(($(date +%s) - begin))
  if [ "$status" -eq 0 ]; then
    echo "$target: clean, ${runs:-0} inputs in $took s"
  else
    failed=1
    where=$(sed -n 's/.*Test unit written to //p' "$build/$target.log" | tail -n 1)
    echo "$target: BROKEN after ${runs:-?} inputs by ${where:-?} (see $build/$target.log)"
  fi
done
exit "$failed"
