#include "platform/plist/Unicode.h"

#include <cstddef>
#include <cstdint>
#include <utility>

namespace quennel {
namespace {

constexpr std::uint32_t firstHighSurrogate = 0xD800;
constexpr std::uint32_t firstLowSurrogate = 0xDC00;
constexpr std::uint32_t behindSurrogates = 0xE000;
constexpr std::uint32_t firstSupplementary = 0x10000;

std::uint32_t unitAt(std::string_view bytes, std::size_t place) {
  return static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[place])) << 8 |
         static_cast<unsigned char>(bytes[place + 1]);
}

void appendUnit(std::string& bytes, std::uint32_t unit) {
  bytes.push_back(static_cast<char>(unit >> 8));
  bytes.push_back(static_cast<char>(unit & 0xFF));
}

/// How many bytes the character that begins so has.
std::size_t lengthOf(unsigned char first) {
  if (first < 0x80) {
    return 1;
  }
  if (first < 0xE0) {
    return 2;
  }
  return first < 0xF0 ? 3 : 4;
}

/// The number of the character whose bytes these are.
std::uint32_t decoded(std::string_view character) {
  const auto first = static_cast<unsigned char>(character.front());
  std::uint32_t number = character.size() == 1 ? first : first & (0x7FU >> character.size());
  for (const char byte : character.substr(1)) {
    number = number << 6 | (static_cast<unsigned char>(byte) & 0x3FU);
  }
  return number;
}

}  // namespace

void appendUTF8(std::string& text, std::uint32_t number) {
  const auto tail = [&](unsigned shift) {
    text.push_back(static_cast<char>(0x80U | (number >> shift & 0x3FU)));
  };
  if (number < 0x80) {
    text.push_back(static_cast<char>(number));
  } else if (number < 0x800) {
    text.push_back(static_cast<char>(0xC0U | number >> 6));
    tail(0);
  } else if (number < firstSupplementary) {
    text.push_back(static_cast<char>(0xE0U | number >> 12));
    tail(6);
    tail(0);
  } else {
    text.push_back(static_cast<char>(0xF0U | number >> 18));
    tail(12);
    tail(6);
    tail(0);
  }
}

std::optional<std::string> utf8OfUTF16(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size());
  std::uint32_t high = 0;
  for (; bytes.size() >= 2; bytes.remove_prefix(2)) {
    const std::uint32_t unit = unitAt(bytes, 0);
    const bool isLow = unit >= firstLowSurrogate && unit < behindSurrogates;
    if (isLow != (high != 0)) {
      return std::nullopt;
    }
    if (unit >= firstHighSurrogate && unit < firstLowSurrogate) {
      high = unit;
      continue;
    }
    appendUTF8(text, isLow ? firstSupplementary + ((high - firstHighSurrogate) << 10) +
                                 (unit - firstLowSurrogate)
                           : unit);
    high = 0;
  }
  return bytes.empty() && high == 0 ? std::optional(std::move(text)) : std::nullopt;
}

std::string utf16OfUTF8(std::string_view text) {
  std::string bytes;
  bytes.reserve(text.size() * 2);
  while (!text.empty()) {
    const std::size_t length = lengthOf(static_cast<unsigned char>(text.front()));
    const std::uint32_t number = decoded(text.substr(0, length));
    text.remove_prefix(length);
    if (number < firstSupplementary) {
      appendUnit(bytes, number);
      continue;
    }
    appendUnit(bytes, firstHighSurrogate + ((number - firstSupplementary) >> 10));
    appendUnit(bytes, firstLowSurrogate + ((number - firstSupplementary) & 0x3FFU));
  }
  return bytes;
}

}  // namespace quennel
