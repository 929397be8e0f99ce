#!/bin/sh
# Installs below a folder of its own and uses what lies there:
#
#   install_test.sh CMAKE BUILD EMBED SOURCES
set -eu

cmake=$1 build=$2 embed=$3 sources=$4
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
"$cmake" --install "$build" --prefix "$prefix" >"$prefix/log"

for file in bin/scrubwell lib/scrubwell/scrubwell_package.so share/man/man1/scrubwell.1 \
  share/bash-completion/completions/scrubwell share/doc/scrubwell/LICENSE \
  share/doc/scrubwell/README.md share/doc/scrubwell/docs/user-guide.md; do
  [ -s "$prefix/$file" ] || { echo "$file was not installed"; exit 1; }
done
"$prefix/bin/scrubwell" plugins >/dev/null
"$embed" "$prefix/lib/scrubwell/scrubwell_package.so" >/dev/null
diff -r "$sources/icons" "$prefix/share/scrubwell/icons"

# Pages and pictures that the documents name come along with them.
cd "$prefix/share/doc/scrubwell"
grep -oE '\]\([a-z-]*/?[a-z-]+\.md|(src|srcset)="[^"]+"' README.md docs/*.md |
  sed -E 's/(\]\(|src=|srcset=)//; s/"//g' | while IFS=: read -r page target; do
  [ -e "$(dirname "$page")/$target" ] || { echo "$page names $target"; exit 1; }
done
