#!/usr/bin/env bash
# Every catalogue is listed, well-formed, and translates every text of the template.
set -eu
cd "$(dirname "$0")/../../resources/po"
for tool in msgfmt msgcmp; do
  command -v "$tool" >/dev/null || { echo "skipped: no $tool"; exit 77; }
done

listed=$(grep -v '^#' LINGUAS | tr ' ' '\n' | sort)
present=$(printf '%s\n' *.po | sed 's/\.po$//' | sort)
[ "$listed" = "$present" ] || { echo "LINGUAS lists: $listed; there are: $present"; exit 1; }

for language in $listed; do
  msgfmt --check --statistics --output-file=/dev/null "$language.po"
  msgcmp "$language.po" quennelhelper.pot
done
