#pragma once

#include <optional>
#include <string>

namespace quennel {

/// The path that a "file:" URI names, byte for byte, without slashes at the end; nothing for any
/// other URI.
std::optional<std::string> pathOfFileURI(const std::string& uri);

}  // namespace quennel
