#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/linux/scope/Bookmark.h"
#include "platform/linux/scope/MessageAuthentication.h"

namespace quennel {

// A bookmark with the proof that someone with the user's key wrote it, and for what. Without a
// purpose it is a token as the settings keep it.

/// Nothing when the cryptographic library is not there.
std::optional<std::string> sealed(const Bookmark& bookmark, const MessageAuthentication::Key& key,
                                  std::string_view purpose = {});

/// The bookmark, if it was sealed with that key and for that purpose.
std::optional<Bookmark> unsealed(std::string_view bytes, const MessageAuthentication::Key& key,
                                 std::string_view purpose = {});

}  // namespace quennel
