#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quennel {

/// The characters that the markup within an element stands for: references replaced, sections taken
/// as they are, comments and instructions left out. Nothing when it is not well formed, or has a
/// character that XML does not allow.
std::optional<std::string> textOfMarkup(std::string_view markup);

/// Markup for a text. Throws a PropertyListError for one that is not UTF-8 or has a character that
/// XML cannot write or does not give back.
std::string markupOfText(const std::string& text);

/// The bytes of Base64 text, white space in it left out; nothing when it is none.
std::optional<std::string> bytesOfBase64(std::string_view text);

std::string base64OfBytes(std::string_view bytes);

}  // namespace quennel
