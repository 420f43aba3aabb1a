#!/usr/bin/env bash
# usage: check-metainfo.sh BUILD_DIRECTORY
# What software centres show of the project follows its standard, and is about the version that is built.
set -eu
build=$1
command -v appstreamcli >/dev/null || { echo "skipped: no appstreamcli"; exit 77; }

metainfo=$build/share/metainfo/net.brellow.QuennelHelper.metainfo.xml
appstreamcli validate --no-net --explain "$metainfo"
newest=$(sed -n 's/.*<release version="\([^"]*\)".*/\1/p' "$metainfo" | head -n 1)
built=$("$build/bin/quennelctl" --version)
[ "quennelctl $newest" = "$built" ] || { echo "its newest release is $newest, this is $built"; exit 1; }
sed -n 's|.*<binary>\(.*\)</binary>.*|\1|p' "$metainfo" | while read -r binary; do
  [ -x "$build/bin/$binary" ] || { echo "there is no program $binary"; exit 1; }
done
