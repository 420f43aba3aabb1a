#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

namespace quennel {

/// The integer that `text` starts with: white space is skipped, then an optional sign, then decimal
/// digits up to anything else. No digits give 0; what does not fit is held at the limits.
std::int64_t integerValue(std::string_view text);

/// Whether `text`, after white space, starts with Y, y, T, t or, after an optional sign and zeros,
/// with a digit that is not zero.
bool textBoolValue(std::string_view text);

/// Every percent escape replaced by its byte, once. Nothing when an escape is unfinished or is
/// none, or when the result is not UTF-8.
std::optional<std::string> removingPercentEscapes(std::string_view text);

/// The text without the newline characters (U+000A to U+000D, U+0085, U+2028, U+2029) at both ends.
/// Spaces and tabs stay.
std::string trimmingNewlines(std::string_view text);

/// Strictly: no overlong forms, no surrogates, nothing above U+10FFFF.
bool isValidUTF8(std::string_view text);

/// `format` with each "%@" replaced by the next argument. Nothing else in it is special, nor
/// anything in an argument; a "%@" that no argument is left for stays as it is.
std::string formattedWithArguments(std::string_view format,
                                   std::initializer_list<std::string_view> arguments);

template <typename... Arguments>
std::string formatted(std::string_view format, const Arguments&... arguments) {
  return formattedWithArguments(format, {std::string_view(arguments)...});
}

}  // namespace quennel
