#include "platform/values/Text.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <limits>

#include "platform/values/PercentEscape.h"

namespace quennel {
namespace {

std::string_view afterWhiteSpace(std::string_view text) {
  const std::size_t start = text.find_first_not_of(" \t\n\v\f\r");
  return start == std::string_view::npos ? std::string_view() : text.substr(start);
}

bool startsWithSign(std::string_view text) {
  return text.starts_with('+') || text.starts_with('-');
}

bool isDigit(char character) { return character >= '0' && character <= '9'; }

constexpr std::array<std::string_view, 7> newlines = {
    "\n", "\v", "\f", "\r", "\xC2\x85", "\xE2\x80\xA8", "\xE2\x80\xA9"};

std::size_t lengthOfLeadingNewline(std::string_view text) {
  for (const std::string_view newline : newlines) {
    if (text.starts_with(newline)) {
      return newline.size();
    }
  }
  return 0;
}

std::size_t lengthOfTrailingNewline(std::string_view text) {
  for (const std::string_view newline : newlines) {
    if (text.ends_with(newline)) {
      return newline.size();
    }
  }
  return 0;
}

bool isContinuation(char character) { return (static_cast<unsigned char>(character) >> 6) == 2; }

/// The number of bytes that a sequence with this first byte has, 0 when no sequence starts so.
std::size_t lengthOfSequence(unsigned char first) {
  if (first < 0x80) {
    return 1;
  }
  if (first < 0xC2 || first > 0xF4) {
    return 0;
  }
  return first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
}

/// Whether the second byte keeps the character from being overlong, a surrogate or too large.
bool isAllowedSecondByte(unsigned char first, unsigned char second) {
  switch (first) {
    case 0xE0:
      return second >= 0xA0;
    case 0xED:
      return second < 0xA0;
    case 0xF0:
      return second >= 0x90;
    case 0xF4:
      return second < 0x90;
    default:
      return true;
  }
}

/// Most text is ASCII, and is passed over in larger steps.
bool startsWithEightOfASCII(std::string_view text) {
  std::uint64_t word = 0;
  if (text.size() < sizeof word) {
    return false;
  }
  std::memcpy(&word, text.data(), sizeof word);
  return (word & 0x8080'8080'8080'8080) == 0;
}

/// The length of the valid sequence that the non-empty `text` starts with, else 0.
std::size_t lengthOfValidSequence(std::string_view text) {
  const auto first = static_cast<unsigned char>(text.front());
  const std::size_t length = lengthOfSequence(first);
  if (length < 2) {
    return length;
  }
  if (text.size() < length || !isAllowedSecondByte(first, static_cast<unsigned char>(text[1]))) {
    return 0;
  }
  for (std::size_t index = 1; index < length; ++index) {
    if (!isContinuation(text[index])) {
      return 0;
    }
  }
  return length;
}

}  // namespace

std::int64_t integerValue(std::string_view text) {
  text = afterWhiteSpace(text);
  const bool isNegative = text.starts_with('-');
  if (startsWithSign(text)) {
    text.remove_prefix(1);
  }
  using Limits = std::numeric_limits<std::int64_t>;
  // Counted below zero, where there is one number more.
  std::int64_t number = 0;
  for (; !text.empty() && isDigit(text.front()); text.remove_prefix(1)) {
    const int digit = text.front() - '0';
    if (number < (Limits::min() + digit) / 10) {
      return isNegative ? Limits::min() : Limits::max();
    }
    number = number * 10 - digit;
  }
  if (isNegative) {
    return number;
  }
  return number == Limits::min() ? Limits::max() : -number;
}

bool textBoolValue(std::string_view text) {
  text = afterWhiteSpace(text);
  if (text.empty()) {
    return false;
  }
  if (std::string_view("YyTt").find(text.front()) != std::string_view::npos) {
    return true;
  }
  if (startsWithSign(text)) {
    text.remove_prefix(1);
  }
  const std::size_t start = text.find_first_not_of('0');
  return start != std::string_view::npos && isDigit(text[start]);
}

std::optional<std::string> removingPercentEscapes(std::string_view text) {
  std::optional<std::string> decoded = percentDecoded(text);
  return decoded && isValidUTF8(*decoded) ? decoded : std::nullopt;
}

std::string trimmingNewlines(std::string_view text) {
  while (const std::size_t length = lengthOfLeadingNewline(text)) {
    text.remove_prefix(length);
  }
  while (const std::size_t length = lengthOfTrailingNewline(text)) {
    text.remove_suffix(length);
  }
  return std::string(text);
}

bool isValidUTF8(std::string_view text) {
  while (!text.empty()) {
    if (startsWithEightOfASCII(text)) {
      text.remove_prefix(8);
      continue;
    }
    const std::size_t length = lengthOfValidSequence(text);
    if (length == 0) {
      return false;
    }
    text.remove_prefix(length);
  }
  return true;
}

std::string formattedWithArguments(std::string_view format,
                                   std::initializer_list<std::string_view> arguments) {
  std::string result;
  for (const std::string_view argument : arguments) {
    const std::size_t place = format.find("%@");
    if (place == std::string_view::npos) {
      break;
    }
    result.append(format.substr(0, place)).append(argument);
    format.remove_prefix(place + 2);
  }
  return result.append(format);
}

}  // namespace quennel
