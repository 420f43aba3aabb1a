#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/linux/base/FileDescriptor.h"
#include "platform/linux/scope/DirectoryIdentity.h"

namespace quennel {

/// Finds a folder by its filesystem's own name for it, wherever it was moved to. The kernel grants
/// this to an ordinary user (since Linux 6.11) only from within namespaces of the user's own, so a
/// child process that has entered such namespaces does it. The child serves several searches, since
/// entering is most of the work, and leaves by itself when none comes for a moment.
class HandleSearch {
 public:
  /// The present path of the folder below the folder `base` of the same filesystem. Nothing when it
  /// is not below it, not everything in between is the user's own, or the kernel does not let a
  /// user search. Answers within a second.
  std::optional<std::string> pathOfDirectory(const DirectoryIdentity& directory,
                                             const std::string& base);

 private:
  std::string askChild(std::string_view request);
  void start();
  bool isServing() const;

  FileDescriptor _child;  // a socket to it
  bool _refused = false;  // the kernel lets no one in
};

}  // namespace quennel
