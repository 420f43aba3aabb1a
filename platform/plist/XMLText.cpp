#include "platform/plist/XMLText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "platform/plist/PropertyListError.h"
#include "platform/plist/StorableText.h"
#include "platform/plist/Unicode.h"

namespace quennel {
namespace {

constexpr std::string_view base64Digits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr std::array<std::pair<std::string_view, char>, 5> entities{
    {{"lt", '<'}, {"gt", '>'}, {"amp", '&'}, {"quot", '"'}, {"apos", '\''}}};

bool isAllowed(std::uint32_t character) {
  const bool isControl =
      character < 0x20 && character != '\t' && character != '\n' && character != '\r';
  const bool isSurrogate = character >= 0xD800 && character < 0xE000;
  return !isControl && !isSurrogate && character != 0xFFFE && character != 0xFFFF &&
         character <= 0x10FFFF;
}

/// Appends what "&NAME;" stands for; answers whether there is such a character.
bool appendReference(std::string& text, std::string_view name) {
  if (!name.starts_with('#')) {
    const auto* const entity =
        std::ranges::find(entities, name, &decltype(entities)::value_type::first);
    if (entity == entities.end()) {
      return false;
    }
    text.push_back(entity->second);
    return true;
  }
  name.remove_prefix(1);
  const bool isHexadecimal = name.starts_with('x');
  name.remove_prefix(isHexadecimal ? 1 : 0);
  std::uint32_t number = 0;
  const auto [end, failure] =
      std::from_chars(name.data(), name.data() + name.size(), number, isHexadecimal ? 16 : 10);
  if (failure != std::errc() || end != name.data() + name.size() || !isAllowed(number)) {
    return false;
  }
  appendUTF8(text, number);
  return true;
}

/// Reads markup piece by piece.
class MarkupReader {
 public:
  explicit MarkupReader(std::string_view markup) : _rest(markup) {}

  std::optional<std::string> read() {
    while (!_rest.empty()) {
      appendPlain(_rest.substr(0, _rest.find_first_of("&<")));
      if (!_rest.empty() && !takeSpecial()) {
        return std::nullopt;
      }
    }
    return std::move(_text);
  }

 private:
  /// XML reads every kind of line end as a newline.
  void appendPlain(std::string_view plain) {
    _rest.remove_prefix(plain.size());
    while (!plain.empty()) {
      const std::size_t length = plain.find('\r');
      _text += plain.substr(0, length);
      if (length == std::string_view::npos) {
        return;
      }
      _text.push_back('\n');
      plain.remove_prefix(length + 1);
      if (plain.starts_with('\n')) {
        plain.remove_prefix(1);
      }
    }
  }

  bool takeSpecial() {
    if (_rest.starts_with("<!--")) {
      return takeTo(4, "-->").has_value();
    }
    if (_rest.starts_with("<?")) {
      return takeTo(2, "?>").has_value();
    }
    if (_rest.starts_with("<![CDATA[")) {
      const auto section = takeTo(9, "]]>");
      _text += section.value_or("");
      return section.has_value();
    }
    const auto name = _rest.starts_with('&') ? takeTo(1, ";") : std::nullopt;
    return name && appendReference(_text, *name);
  }

  /// What stands between the first `head` bytes and `end`; takes all of it.
  std::optional<std::string_view> takeTo(std::size_t head, std::string_view end) {
    const std::size_t place = _rest.find(end, head);
    if (place == std::string_view::npos) {
      return std::nullopt;
    }
    const std::string_view inside = _rest.substr(head, place - head);
    _rest.remove_prefix(place + end.size());
    return inside;
  }

  std::string_view _rest;
  std::string _text;
};

/// XML has no way to write most control characters, and readers turn a carriage return into a
/// newline.
void checkCharacters(const std::string& text) {
  const bool hasControl = std::ranges::any_of(
      text, [](char c) { return static_cast<unsigned char>(c) < ' ' && c != '\t' && c != '\n'; });
  if (hasControl || text.find("\xEF\xBF\xBE") != std::string::npos ||
      text.find("\xEF\xBF\xBF") != std::string::npos) {
    throw PropertyListError("A control character cannot be stored in an XML property list.");
  }
}

}  // namespace

std::optional<std::string> textOfMarkup(std::string_view markup) {
  if (markup.find_first_of("&<\r") == std::string_view::npos) {
    return std::string(markup);
  }
  return MarkupReader(markup).read();
}

std::string markupOfText(const std::string& text) {
  checkCharacters(storable(text));
  std::string markup;
  markup.reserve(text.size());
  for (const char character : text) {
    switch (character) {
      case '<':
        markup += "&lt;";
        break;
      case '>':
        markup += "&gt;";
        break;
      case '&':
        markup += "&amp;";
        break;
      default:
        markup.push_back(character);
    }
  }
  return markup;
}

std::optional<std::string> bytesOfBase64(std::string_view text) {
  std::string bytes;
  std::uint32_t bits = 0;
  unsigned count = 0;
  bool isPadded = false;
  for (const char character : text) {
    if (character == ' ' || character == '\t' || character == '\n' || character == '\r') {
      continue;
    }
    if (character == '=') {
      isPadded = true;
      continue;
    }
    const std::size_t digit = base64Digits.find(character);
    if (digit == std::string_view::npos || isPadded) {
      return std::nullopt;
    }
    bits = bits << 6 | static_cast<std::uint32_t>(digit);
    count += 6;
    if (count >= 8) {
      count -= 8;
      bytes.push_back(static_cast<char>(bits >> count & 0xFF));
    }
  }
  return bytes;
}

std::string base64OfBytes(std::string_view bytes) {
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t place = 0; place < bytes.size(); place += 3) {
    const std::string_view group = bytes.substr(place, 3);
    std::uint32_t bits = 0;
    for (std::size_t index = 0; index < 3; ++index) {
      bits = bits << 8 | (index < group.size() ? static_cast<unsigned char>(group[index]) : 0U);
    }
    for (std::size_t digit = 0; digit < 4; ++digit) {
      text.push_back(digit <= group.size() ? base64Digits[bits >> (18 - 6 * digit) & 0x3F] : '=');
    }
  }
  return text;
}

}  // namespace quennel
