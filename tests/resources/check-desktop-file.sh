#!/usr/bin/env bash
# usage: check-desktop-file.sh BUILD_DIRECTORY
# The desktop entry follows its standard, serves the scheme, and starts what hands over and ends. It does
# not ask to be activated over the bus: a launcher that ends before its message is out loses the request.
set -eu
build=$(cd "$1" && pwd)
command -v desktop-file-validate >/dev/null || { echo "skipped: no desktop-file-validate"; exit 77; }

entry=$build/share/applications/net.brellow.QuennelHelper.desktop
complaints=$(desktop-file-validate "$entry" 2>&1) || { echo "$complaints"; exit 1; }
[ -z "$complaints" ] || { echo "$complaints"; exit 1; }
grep -qxF "Exec=$build/bin/quennelhelper --open %U" "$entry"
icon=$(sed -n 's/^Icon=//p' "$entry")
[ -f "$build/share/icons/hicolor/scalable/apps/$icon.svg" ] || { echo "there is no icon $icon"; exit 1; }
grep -qx 'MimeType=x-scheme-handler/quennel;' "$entry"
if grep -q '^DBusActivatable=true' "$entry"; then
  echo "the entry asks to be activated over the bus"
  exit 1
fi
grep -qx 'Name=net.brellow.QuennelHelper' "$build/share/dbus-1/services/net.brellow.QuennelHelper.service"
