#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quennel {

/// Whether `text` starts with a percent sign and two hexadecimal digits.
bool startsWithPercentEscape(std::string_view text);

/// Every percent escape replaced by its byte, once, whatever bytes result; nothing when a percent
/// sign starts no escape.
std::optional<std::string> percentDecoded(std::string_view text);

/// Adds the byte to `text` as an escape.
void appendPercentEscape(std::string& text, char byte);

}  // namespace quennel
