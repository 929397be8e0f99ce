#!/bin/sh
# Installs Wine for programs of both widths on Debian 12. Does nothing, and needs no rights, when it
# is there.
set -eu

fail() {
  echo "wine-install: $1" >&2
  exit 1
}

there() { [ -x /usr/lib/wine/wine ] && [ -x /usr/lib/wine/wine64 ]; }

if there; then exit 0; fi
command -v apt-get >/dev/null || fail "no Debian here; Wine for both widths is needed"
as_root=""
if [ "$(id -u)" -ne 0 ]; then
  command -v sudo >/dev/null || fail "run this as root once"
  as_root="sudo"
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
chmod 755 "$work"  # packages are fetched as another user
log="$work/log"

# Nothing that is there may go for it.
install_wine() {
  # shellcheck disable=SC2086  # nothing or one word
  $as_root env DEBIAN_FRONTEND=noninteractive apt-get -qy "$@" install --no-install-recommends \
    --no-remove wine wine64 wine32:i386 >>"$log" 2>&1 </dev/null
}

echo "Installing Wine for both widths" >&2
$as_root dpkg --add-architecture i386
$as_root apt-get -q update >>"$log" 2>&1 </dev/null || true  # the install says what is missing
install_wine || true
if there; then exit 0; fi

# The two architectures are held at the same versions. When the updates' index of one is out of
# step with the other's, only the release itself has both, so packages go back to it.
mkdir -p "$work/lists/partial"
echo "deb [signed-by=/usr/share/keyrings/debian-archive-keyring.gpg]" \
  "http://deb.debian.org/debian bookworm main" >"$work/sources.list"
printf 'Package: *\nPin: release n=bookworm\nPin-Priority: 1001\n' >"$work/preferences"
set -- -o "Dir::Etc::SourceList=$work/sources.list" -o Dir::Etc::SourceParts=/dev/null \
  -o "Dir::Etc::Preferences=$work/preferences" -o Dir::Etc::PreferencesParts=/dev/null \
  -o "Dir::State::Lists=$work/lists" -o Dir::Cache::pkgcache= -o Dir::Cache::srcpkgcache=
# shellcheck disable=SC2086
$as_root apt-get -q "$@" update >>"$log" 2>&1 </dev/null || true
install_wine "$@" --allow-downgrades || true
there || {
  tail -n 20 "$log" >&2
  fail "Wine could not be installed"
}
