#!/usr/bin/env bash
# The package names every library that is opened by name, which nothing else would notice, and every package
# that a build from its sources needs is one that scripts/packages installs.
set -eu
cd "$(dirname "$0")/../.."
needed=$(mktemp)
trap 'rm -f "$needed"' EXIT
control=packaging/debian/control
fail() { echo "$1"; exit 1; }

libraries=$(grep -rhoE '"lib[a-z0-9+-]+\.so\.[0-9]+"' --include='*.cpp' platform app finderpath | tr -d '"' |
  sed 's/\.so\.//' | sort -u)
[ -n "$libraries" ] || fail "no library is opened by name"
for library in $libraries; do
  sed -n '/^Package: quennelhelper$/,/^Description/p' "$control" | grep -qw "$library" ||
    fail "quennelhelper does not depend on $library"
done

sed -n '/^Build-Depends:/,/[^,]$/p' "$control" | grep -oE '[a-z0-9-]+,?$' | tr -d ',' >"$needed"
while read -r package; do
  sed -n '/^build=(/,/)$/p' scripts/packages | grep -qE "(^|[ (])$package([ )]|\$)" ||
    fail "the build needs $package, which scripts/packages build does not install"
done <"$needed"
