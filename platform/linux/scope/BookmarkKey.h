#pragma once

#include <optional>
#include <string>

#include "platform/Error.h"
#include "platform/linux/scope/MessageAuthentication.h"

namespace quennel {

/// The secret that tokens are authenticated with: one file that only its user can read. A file that
/// is there and cannot be used, because someone else could have read or written it, say, stays as
/// it is: with another key every token of the user's would be lost for good.
class BookmarkKey {
 public:
  /// Where the user's key is: in the user's folder for data.
  static std::string pathForUser();

  /// `path` is where the file is or will be; its folder is made when it is needed.
  explicit BookmarkKey(std::string path) : _path(std::move(path)) {}

  /// The key, or nothing when there is none (ENOENT) or none that can be used.
  std::optional<MessageAuthentication::Key> read(Error* error = nullptr) const;

  /// The same, but makes a key when there is none. Processes that do so at once get the same one.
  std::optional<MessageAuthentication::Key> readOrMake(Error* error) const;

 private:
  std::optional<MessageAuthentication::Key> make(Error* error) const;

  std::string _path;
};

}  // namespace quennel
