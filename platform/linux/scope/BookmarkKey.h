#pragma once

#include <optional>
#include <string>

#include "platform/Error.h"
#include "platform/linux/scope/MessageAuthentication.h"

namespace quennel {

/// The secret that tokens are authenticated with: one file that only its user can read. A file that
/// someone else could have read or written is not used.
class BookmarkKey {
 public:
  /// Where the user's key is: in the user's folder for data.
  static std::string pathForUser();

  /// `path` is where the file is or will be; its folder is made when it is needed.
  explicit BookmarkKey(std::string path) : _path(std::move(path)) {}

  /// The key, or nothing when there is none that can be trusted.
  std::optional<MessageAuthentication::Key> read() const;

  /// The same, but makes a key when there is none. Processes that do so at once get the same one.
  std::optional<MessageAuthentication::Key> readOrMake(Error* error) const;

 private:
  bool make() const;

  std::string _path;
};

}  // namespace quennel
