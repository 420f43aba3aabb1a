#pragma once

#include <cstddef>
#include <string>

#include "platform/FileInspector.h"

namespace quennel {

/// The absolute path of what `path`, seen from the current folder, names. Throws a CommandFailure
/// when there is nothing at the path.
std::string existingPath(const std::string& path, const FileInspector& files);

/// The same for what has to be a folder.
std::string existingFolder(const std::string& path, const FileInspector& files);

/// The number that `text` says, of a template. Throws a UsageError for what is no number.
std::size_t templateIndex(const std::string& text);

}  // namespace quennel
