#!/usr/bin/env bash
# usage: check-install.sh CMAKE BUILD_DIRECTORY
# Installs below a staging folder, with a prefix of its own: everything that the helper looks up by
# name is there as in the build tree, and the service file names the prefix, not the staging folder.
set -eu
cmake=$1 build=$2
stage=$(mktemp -d)
trap 'rm -rf "$stage"' EXIT

DESTDIR=$stage "$cmake" --install "$build" --prefix "/opt/a prefix" >/dev/null
cd "$stage/opt/a prefix"
for folder in share lib; do
  [ -d "$build/$folder" ] || continue
  (cd "$build/$folder" && find . -type f ! -name '*.service') | while read -r file; do
    cmp "$build/$folder/$file" "$folder/$file" || exit 1
  done
done
service=share/dbus-1/services/net.brellow.QuennelHelper.service
grep -qx 'Exec="/opt/a prefix/bin/quennelhelper"' "$service"
grep -qx "Exec=\"$build/bin/quennelhelper\"" "$build/$service"
