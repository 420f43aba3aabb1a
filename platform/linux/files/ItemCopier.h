#pragma once

#include <string>

namespace quennel {

/// Makes `toPath` a copy of the file or folder at `path`: complete or not at all, never in place of
/// something else. A source that is a symbolic link is followed. Throws FileFailure.
void copyItem(const std::string& path, const std::string& toPath);

/// Puts such a copy of the file or folder at `path` in the place of the item at `toPath`. Throws
/// FileFailure, of the step `Removing` when the old item may not be taken away; it is there then.
void replaceItem(const std::string& path, const std::string& toPath);

}  // namespace quennel
