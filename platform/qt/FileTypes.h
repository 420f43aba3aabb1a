#pragma once

#include <optional>
#include <string>

namespace quennel {

/// The description, in the user's language, of the type of files with this name extension; nothing
/// when no type has it. Needs no display.
std::optional<std::string> descriptionOfFileExtension(const std::string& extension);

}  // namespace quennel
