#!/usr/bin/env bash
# What installs packages waits while the package manager is busy, and only then; any other failure is one.
set -eu
scripts=$(cd "$(dirname "$0")/../../scripts" && pwd)
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
export CALLS=$folder/calls BUSY=2 COMPLAINT="E: Could not get lock /var/lib/apt/lists/lock. It is held."

stand_in() {
  printf '#!/bin/sh\n%s\n' "$2" >"$folder/$1"
  chmod +x "$folder/$1"
}
stand_in dpkg-query 'exit 1'
stand_in id 'echo 0'
# shellcheck disable=SC2016 # for the stand-in itself
stand_in sleep 'echo sleep >>"$CALLS"'
# shellcheck disable=SC2016 # for the stand-in itself
stand_in apt-get 'echo "$@" >>"$CALLS"
[ "$(grep -c -v sleep "$CALLS")" -gt "$BUSY" ] || { echo "$COMPLAINT" >&2; exit 100; }'

run() { : >"$CALLS"; PATH=$folder:$PATH "$scripts/packages" build 2>"$folder/errors"; }
times() { grep -c -e "$1" "$CALLS" || true; }
fail() { echo "$1"; cat "$CALLS" "$folder/errors"; exit 1; }

run || fail "it did not wait"
[ "$(times ' update ')/$(times ' install ')/$(times sleep)" = 3/1/2 ] || fail "not asked again until it was free"

COMPLAINT='E: Unable to fetch some archives'
if run; then fail "a failure was taken for success"; fi
[ "$(times ' update ')/$(times sleep)" = 1/0 ] || fail "a failure was waited for"
grep -q 'Unable to fetch' "$folder/errors" || fail "the reason is missing"
