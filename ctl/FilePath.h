#pragma once

#include <string>

namespace quennel {

/// The absolute path of what `path`, seen from the current folder, names: without empty and "."
/// components and with ".." resolved as the system does, links included. Throws a CommandFailure
/// when there is nothing at the path.
std::string existingPath(const std::string& path);

/// The same for what has to be a folder.
std::string existingFolder(const std::string& path);

/// The path as messages show it, on one line whatever its bytes are.
std::string shown(const std::string& path);

}  // namespace quennel
