#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/Error.h"
#include "platform/linux/scope/Bookmark.h"
#include "platform/linux/scope/MessageAuthentication.h"

namespace quennel {

/// What the user authorized anew: for a token whose folder is gone, the folder that has taken its
/// place with the user's consent. The token itself stays where it is kept, as it is. One file for
/// every such token, which nobody without the user's key can have written, and for no other token.
class BookmarkRenewals {
 public:
  /// `folder` is made when something is kept for the first time.
  explicit BookmarkRenewals(std::string folder) : _folder(std::move(folder)) {}

  /// The folder that was last kept for the token.
  std::optional<Bookmark> find(std::string_view token, const MessageAuthentication::Key& key) const;

  bool keep(std::string_view token, const Bookmark& folder, const MessageAuthentication::Key& key,
            Error* error) const;

 private:
  std::string _folder;
};

}  // namespace quennel
