#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/values/PropertyList.h"

namespace quennel {

/// Whether the bytes start as a property list in the binary form does.
bool isBinaryPropertyList(std::string_view bytes);

/// Whether the parser can be trusted with the bytes: every object lies inside the file and is of a
/// known kind, every text is one, no object holds itself, and the tree that the objects stand for,
/// in which an object counts as often as it is referred to, is within the limits
/// (PropertyListLimits.h).
bool isSoundBinaryPropertyList(std::string_view bytes);

/// The file with the entry of its top dictionary set or (for no value) removed. Throws a
/// PropertyListError for a value that cannot be stored.
std::string settingBinaryEntry(std::string_view bytes, const std::string& key,
                               const std::optional<PropertyList>& value);

}  // namespace quennel
