#pragma once

#include <string>

namespace quennel {

/// Makes `toPath` a copy of the file or folder at `path`: complete or not at all, never in place of
/// something else. A source that is a symbolic link is followed. Throws FileFailure.
void copyItem(const std::string& path, const std::string& toPath);

}  // namespace quennel
