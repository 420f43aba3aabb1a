#pragma once

#include <string>
#include <string_view>

namespace quennel {

/// Makes `contents` the contents of the file at `path`, on disk when it returns: a reader sees the
/// old file or the new one, never a part. An existing file keeps its mode and, as far as allowed,
/// its owner; a new one is for its owner alone. A symbolic link stays, and the file that it leads
/// to is replaced. Throws a FileError, after which the old file is as it was.
void replaceFile(const std::string& path, std::string_view contents);

/// Makes the folder and its missing parents, each for the owner alone. Throws a FileError.
void makeFolder(const std::string& path);

}  // namespace quennel
