#include "platform/plist/XMLScanner.h"

#include <algorithm>

namespace quennel {
namespace {

/// Whether the text between "<" and the next ">" is all of the tag: neither begins another one in
/// it nor does it end within quotes.
bool isWholeTag(std::string_view inside) {
  char quote = '\0';
  for (const char c : inside) {
    if (c == '<') {
      return false;
    }
    if (c == quote) {
      quote = '\0';
    } else if (quote == '\0' && (c == '"' || c == '\'')) {
      quote = c;
    }
  }
  return quote == '\0';
}

bool isName(std::string_view text) {
  return !text.empty() && std::ranges::all_of(text, [](char c) { return c >= 'a' && c <= 'z'; });
}

bool holdsElements(std::string_view name) {
  return name == "plist" || name == "dict" || name == "array";
}

}  // namespace

std::optional<XMLScanner::Tag> XMLScanner::next() {
  for (;;) {
    _place = _text.find('<', _place);
    if (_failed || _place == std::string_view::npos) {
      _place = _text.size();
      return std::nullopt;
    }
    const std::string_view rest = _text.substr(_place);
    if (!rest.starts_with("<!") && !rest.starts_with("<?")) {
      return takeTag();
    }
    if (!skipMarkup()) {
      return fail();
    }
  }
}

bool XMLScanner::skipMarkup() {
  const std::string_view rest = _text.substr(_place);
  if (rest.starts_with("<!--")) {
    _place += 4;
    return skipTo("-->");
  }
  if (rest.starts_with("<![CDATA[")) {
    return _isInText && skipTo("]]>");
  }
  if (rest.starts_with("<?")) {
    return skipTo("?>");
  }
  return skipDeclaration();
}

bool XMLScanner::skipTo(std::string_view end) {
  const std::size_t place = _text.find(end, _place);
  if (place == std::string_view::npos) {
    return false;
  }
  _place = place + end.size();
  return true;
}

bool XMLScanner::skipDeclaration() {
  const std::size_t start = _place;
  if (!skipTo(">")) {
    return false;
  }
  // A declaration may hold further declarations in brackets and ">" in quotes. No property list
  // needs that.
  const std::string_view inside = _text.substr(start + 1, _place - start - 2);
  return inside.find('[') == std::string_view::npos && isWholeTag(inside);
}

std::optional<XMLScanner::Tag> XMLScanner::takeTag() {
  const std::size_t start = _place;
  if (!skipTo(">")) {
    return fail();
  }
  std::string_view inside = _text.substr(start + 1, _place - start - 2);
  if (!isWholeTag(inside)) {
    return fail();
  }
  Kind kind = Kind::Opening;
  if (inside.starts_with('/')) {
    kind = Kind::Closing;
    inside.remove_prefix(1);
  } else if (inside.ends_with('/')) {
    kind = Kind::Empty;
    inside.remove_suffix(1);
  }
  const std::string_view name = inside.substr(0, inside.find_first_of(" \t\r\n"));
  _isInText = kind == Kind::Opening && !holdsElements(name);
  return isName(name) ? Tag{kind, name, start, _place} : fail();
}

std::optional<XMLScanner::Tag> XMLScanner::fail() {
  _failed = true;
  return std::nullopt;
}

}  // namespace quennel
