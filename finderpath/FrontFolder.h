#pragma once

#include <optional>
#include <string>

namespace quennel {

/// The folder that the file manager's window in front shows; nothing when there is no such window,
/// or when its folder cannot be known for certain.
std::optional<std::string> frontFolder();

/// Whether the reader of a line gets the path from it as it is: it is UTF-8, and has no line breaks
/// at its end.
bool canBePrinted(const std::string& path);

}  // namespace quennel
