#!/usr/bin/env bash
# usage: check-install.sh CMAKE BUILD_DIRECTORY
# Installs below a staging folder, with a prefix of its own: everything that the helper looks up by
# name is there as in the build tree, and what names the helper by its path names the prefix, not the
# staging folder. Without one the scheme's handler is known at once.
set -eu
cmake=$1 build=$2
stage=$(mktemp -d)
trap 'rm -rf "$stage"' EXIT
entry=share/applications/net.brellow.QuennelHelper.desktop
service=share/dbus-1/services/net.brellow.QuennelHelper.service
known=share/applications/mimeinfo.cache

DESTDIR=$stage "$cmake" --install "$build" --prefix '/opt/a $%prefix' >/dev/null
cd "$stage/opt/a \$%prefix"
for folder in share lib; do
  [ -d "$build/$folder" ] || continue
  (cd "$build/$folder" && find . -type f ! -name '*.service' ! -name '*.desktop') | while read -r file; do
    cmp "$build/$folder/$file" "$folder/$file" || exit 1
  done
done
grep -qxF 'Exec="/opt/a \\$%prefix/bin/quennelhelper"' "$service"
grep -qxF 'Exec="/opt/a \\$%%prefix/bin/quennelhelper" --open %U' "$entry"
grep -qxF "Exec=$build/bin/quennelhelper" "$build/$service"
[ ! -e "$known" ] || { echo "a package's $known would be another package's, too"; exit 1; }

command -v update-desktop-database >/dev/null || { echo "skipped: no update-desktop-database"; exit 77; }
"$cmake" --install "$build" --prefix "$stage/home" >/dev/null
grep -qx 'x-scheme-handler/quennel=net.brellow.QuennelHelper.desktop;' "$stage/home/$known"
