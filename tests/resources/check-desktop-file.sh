#!/usr/bin/env bash
# The desktop file follows its standard, and carries the name by which the bus starts the helper.
set -eu
cd "$(dirname "$0")/../../resources"
command -v desktop-file-validate >/dev/null || { echo "skipped: no desktop-file-validate"; exit 77; }

desktop_file=net.brellow.QuennelHelper.desktop
complaints=$(desktop-file-validate "$desktop_file" 2>&1) || { echo "$complaints"; exit 1; }
[ -z "$complaints" ] || { echo "$complaints"; exit 1; }
grep -qx 'DBusActivatable=true' "$desktop_file"
grep -qx 'MimeType=x-scheme-handler/quennel;' "$desktop_file"
grep -qx "Name=${desktop_file%.desktop}" net.brellow.QuennelHelper.service.in
