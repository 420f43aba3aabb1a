#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/linux/scope/DirectoryIdentity.h"

namespace quennel {

/// What a token says about its folder.
struct Bookmark {
  /// Where the folder was, as the user named it.
  std::string path;
  /// The same place counted from the root of its filesystem, without a slash at the start.
  std::string relativePath;
  /// The type by which that filesystem was mounted.
  std::string filesystemType;
  DirectoryIdentity identity;

  bool operator==(const Bookmark&) const = default;
};

/// The bookmark as bytes, and back. Reading takes only what writing can have made.
std::string bytesOfBookmark(const Bookmark& bookmark);
std::optional<Bookmark> bookmarkOfBytes(std::string_view bytes);

}  // namespace quennel
