#!/usr/bin/env bash
# usage: check-man-pages.sh BUILD_DIRECTORY
# Every program has a man page, which says every command and option that its help says; the pages are
# typeset without complaint.
set -eu
build=$1
command -v man >/dev/null || { echo "skipped: no man"; exit 77; }
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
export LC_ALL=C.UTF-8 LANGUAGE=en MANWIDTH=500
fail() { echo "$1"; exit 1; }

for page in "$build"/share/man/man?/*.?; do
  man --warnings --local-file "$page" 2>"$folder/complaints" |
    sed 's/^ *//; s/ \+/ /g' >"$folder/$(basename "$page")"
  [ ! -s "$folder/complaints" ] || { cat "$folder/complaints"; exit 1; }
  if grep '@' "$folder/$(basename "$page")"; then fail "$page: something was not filled in"; fi
done
for program in "$build"/bin/*; do
  [ -s "$folder/$(basename "$program").1" ] || fail "$(basename "$program") has no man page"
done

tr -s '\n ' ' ' <"$folder/quennelctl.1" >"$folder/flat"
says() { grep -qFe " $1 " "$folder/flat" || fail "quennelctl.1 does not say: $1"; }
"$build/bin/quennelhelper" --help | grep -o -e '--[a-z-]\+' | sort -u >"$folder/options"
while read -r option; do
  grep -q -e "^\(-h, \)\?$option\( \|$\)" "$folder/quennelhelper.1" || fail "quennelhelper.1 leaves out $option"
done <"$folder/options"
"$build/bin/quennelctl" --help | awk -F '  +' '/^  [a-z]/ { print $2 }' >"$folder/commands"
[ -s "$folder/commands" ] || fail "--help lists no commands"
while read -ra command; do
  words=()
  for word in "${command[@]}"; do
    [[ $word = [^a-z]* ]] || words+=("$word")
  done
  "$build/bin/quennelctl" "${words[@]}" --help >"$folder/help"
  says "$(sed -n '1s/^Usage: quennelctl //p' "$folder/help")"
  sed '1,2d; /^Options:$/d; /^ /!d' "$folder/help" >"$folder/items"
  while IFS= read -r item; do
    says "$(awk -F '  +' '{ print $2, $3 }' <<<"$item")"
  done <"$folder/items"
done <"$folder/commands"
