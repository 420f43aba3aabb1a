#!/usr/bin/env bash
# Every text that the code looks up is in the template of the catalogues.
set -eu
cd "$(dirname "$0")/../.."
for tool in xgettext msgcmp; do
  command -v "$tool" >/dev/null || { echo "skipped: no $tool"; exit 77; }
done

used=$(mktemp)
interfaces=$(mktemp --suffix=.cpp)
trap 'rm -f "$used" "$interfaces"' EXIT
sed -n 's|.*<string>\(.*\)</string>.*|localizedText("\1");|p' resources/*.ui >"$interfaces"
{ find app creation access shortcuts installui platform watch -name '*.cpp' -o -name '*.h' |
  sort && echo "$interfaces"; } | xgettext --files-from=- --language=C++ --from-code=UTF-8 --force-po \
    --keyword --keyword=localizedStringForKey --keyword=localizedText --keyword=textKey --output="$used"
msgcmp --use-untranslated resources/po/quennelhelper.pot "$used"
