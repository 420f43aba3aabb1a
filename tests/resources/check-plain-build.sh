#!/usr/bin/env bash
# usage: check-plain-build.sh CMAKE
# A new build tree is configured without what only the tests need.
set -eu
cmake=$1
cd "$(dirname "$0")/../.."
tree=$(mktemp -d)
trap 'rm -rf "$tree"' EXIT
"$cmake" --preset release -B "$tree" -DCMAKE_DISABLE_FIND_PACKAGE_GTest=ON >"$tree/output" 2>&1 ||
  { cat "$tree/output"; exit 1; }
