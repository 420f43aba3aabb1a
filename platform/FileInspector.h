#pragma once

#include <optional>
#include <string>

#include "platform/Error.h"

namespace quennel {

/// What is to be known of an item before it can be a template or a granted folder.
struct FileFacts {
  enum class Kind { File, Folder, Special };

  Kind kind = Kind::File;
  /// Whether anybody may run it.
  bool isExecutable = false;
  /// Why the user cannot read it, a folder's entries included; nothing when the user can.
  std::optional<Error> obstacle = std::nullopt;
};

/// Looks at items that a user names. Symbolic links are followed. Main thread only.
class FileInspector {
 public:
  virtual ~FileInspector() = default;

  /// Nothing when no item can be found there.
  virtual std::optional<FileFacts> factsOf(const std::string& path,
                                           Error* error = nullptr) const = 0;

  /// The absolute path of the item that `path`, seen from the current folder, names: without empty
  /// and "." components and with ".." resolved as the system does, links included. Nothing when no
  /// item can be found there.
  virtual std::optional<std::string> absolutePath(const std::string& path,
                                                  Error* error = nullptr) const = 0;
};

}  // namespace quennel
