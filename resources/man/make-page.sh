#!/bin/sh
# usage: make-page.sh TEMPLATE VERSION PROGRAM PAGE
# Writes a man page: the template, with the version for @VERSION@, and in place of these lines what the
# program's own help says:
#
#   @usage@     how the program is called
#   @about@     what it does
#   @commands@  every command, with its options
set -eu
template=$1 version=$2 program=$3 page=$4
LC_ALL=C LANGUAGE=C
export LC_ALL LANGUAGE

# The lines of a help text as a page has them. "  name  text" is an item of a list.
formatted() {
  awk '
    function escaped(text) {
      gsub(/\\/, "\\e", text)
      gsub(/--/, "\\-\\-", text)
      return text ~ /^[.\047]/ ? "\\&" text : text
    }
    /^Options:$/ { next }
    /^  [^ ]/ {
      name = substr($0, 3)
      text = match(name, /  +/) ? substr(name, RSTART + RLENGTH) : ""
      if (RSTART) name = substr(name, 1, RSTART - 1)
      value = match(name, / [A-Z]+$/) ? substr(name, RSTART + 1) : ""
      if (RSTART) name = substr(name, 1, RSTART)
      gsub(/-/, "\\-", name)
      printf ".TP\n.BI \"%s\" %s\n%s\n", name, value, escaped(text)
      next
    }
    /^$/ { print ".PP"; next }
    { print escaped($0) }'
}

usage() { "$program" --help | sed -n '/^$/q; s/^[Uu]sage: *//; s/^ *//; s/--/\\-\\-/; p' | sed 's/$/\n.br/; $s/\n.br$//'; }
about() { "$program" --help | sed '1,/^$/d' | formatted; }

commands() {
  "$program" --help | awk -F '  +' '/^  [a-z]/ { print $2 }' | while read -r command; do
    # The words in capitals or brackets are its arguments.
    # shellcheck disable=SC2046,SC2001 # a command is several words; more than a fixed text is replaced
    "$program" $(echo "$command" | sed 's/ [^a-z].*//') --help |
      sed '1s/^Usage: quennelctl \(.*\)$/.SS "\1"/; 2d' | formatted_after_heading
  done
}
formatted_after_heading() {
  read -r heading
  printf '%s\n' "$heading"
  formatted
}

while IFS= read -r line; do
  case $line in
    @usage@) usage ;;
    @about@) about ;;
    @commands@) commands ;;
    *) printf '%s\n' "$line" | sed "s/@VERSION@/$version/" ;;
  esac
done <"$template" >"$page.new"
mv "$page.new" "$page"
