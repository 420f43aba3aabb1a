#!/usr/bin/env bash
# usage: check-uninstall.sh CMAKE BUILD_DIRECTORY
# Removing what was installed leaves what was there before, and nothing else but empty top folders.
set -eu
cmake=$1 build=$2
command -v update-desktop-database >/dev/null || { echo "skipped: no update-desktop-database"; exit 77; }
home=$(mktemp -d)
trap 'rm -rf "$home"' EXIT
entries=$home/share/applications
mkdir -p "$entries"
printf '[Desktop Entry]\nType=Application\nName=Other\nExec=other %%u\nMimeType=x-scheme-handler/other;\n' \
  >"$entries/other.desktop"

"$cmake" --install "$build" --prefix "$home" >/dev/null
grep -q quennel "$entries/mimeinfo.cache"
"$cmake" --install "$build" --prefix "$home/elsewhere" >/dev/null
PREFIX=$home "$cmake" -P "$build/uninstall.cmake" >/dev/null
[ -x "$home/elsewhere/bin/quennelhelper" ] || { echo "another installation was removed"; exit 1; }
rm -r "$home/elsewhere"
left=$(cd "$home" && find . -type f | sort | tr '\n' ' ')
[ "$left" = "./share/applications/mimeinfo.cache ./share/applications/other.desktop " ] ||
  { echo "left: $left"; exit 1; }
grep -qx 'x-scheme-handler/other=other.desktop;' "$entries/mimeinfo.cache"
if grep quennel "$entries/mimeinfo.cache"; then exit 1; fi

rm -r "${home:?}/share" "${home:?}/bin" "${home:?}/lib"
"$cmake" --install "$build" --prefix "$home" >/dev/null
"$cmake" -P "$build/uninstall.cmake" >/dev/null
left=$(cd "$home" && find . -mindepth 1 | sort | tr '\n' ' ')
[ "$left" = "./bin ./lib ./share " ] || { echo "left: $left"; exit 1; }
