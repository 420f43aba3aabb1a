#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/values/PropertyList.h"

namespace quennel {

/// The binary property list with the entry of its top dictionary set or (for no value) removed, and
/// every other object as it was, byte for byte. `bytes` has been read (BinaryReader.h). Throws a
/// PropertyListError for a value that cannot be stored.
std::string settingBinaryEntry(std::string_view bytes, const std::string& key,
                               const std::optional<PropertyList>& value);

}  // namespace quennel
