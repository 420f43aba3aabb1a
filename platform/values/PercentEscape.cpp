#include "platform/values/PercentEscape.h"

namespace quennel {
namespace {

/// The value of a hexadecimal digit, -1 for anything else.
int digitValue(char character) {
  if (character >= '0' && character <= '9') {
    return character - '0';
  }
  if (character >= 'A' && character <= 'F') {
    return character - 'A' + 10;
  }
  if (character >= 'a' && character <= 'f') {
    return character - 'a' + 10;
  }
  return -1;
}

}  // namespace

bool startsWithPercentEscape(std::string_view text) {
  return text.size() >= 3 && text[0] == '%' && digitValue(text[1]) >= 0 && digitValue(text[2]) >= 0;
}

std::optional<std::string> percentDecoded(std::string_view text) {
  std::string decoded;
  decoded.reserve(text.size());
  while (!text.empty()) {
    if (text.front() != '%') {
      decoded += text.front();
      text.remove_prefix(1);
      continue;
    }
    if (!startsWithPercentEscape(text)) {
      return std::nullopt;
    }
    decoded += static_cast<char>(digitValue(text[1]) * 16 + digitValue(text[2]));
    text.remove_prefix(3);
  }
  return decoded;
}

void appendPercentEscape(std::string& text, char byte) {
  constexpr std::string_view digits = "0123456789ABCDEF";
  const auto value = static_cast<unsigned char>(byte);
  text += {'%', digits[value >> 4], digits[value & 15]};
}

}  // namespace quennel
