#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quennel {

/// Appends the character of that number, which is none of a surrogate.
void appendUTF8(std::string& text, std::uint32_t number);

/// The text of big-endian UTF-16. Nothing for an odd number of bytes, and for surrogates that are
/// no pair.
std::optional<std::string> utf8OfUTF16(std::string_view bytes);

/// Big-endian UTF-16 of a text that is valid UTF-8.
std::string utf16OfUTF8(std::string_view text);

}  // namespace quennel
