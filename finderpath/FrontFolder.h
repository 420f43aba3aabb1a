#pragma once

#include <optional>
#include <string>

namespace quennel {

/// The folder in front, or why it is not told.
struct FrontFolder {
  std::optional<std::string> path;
  /// A key of the string table; null with a path.
  const char* reason = nullptr;
};

/// The folder that the file manager's window in front shows, when that is certain. A window that
/// shows `scriptsFolder` is passed over: it was opened to install the user script, and nobody wants
/// a new file there.
FrontFolder frontFolder(const std::string& scriptsFolder);

/// Whether the reader of a line gets the path from it as it is: it is UTF-8, and has no line breaks
/// at its end.
bool canBePrinted(const std::string& path);

}  // namespace quennel
