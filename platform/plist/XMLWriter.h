#pragma once

#include <optional>
#include <string>

#include "platform/values/PropertyList.h"

namespace quennel {

/// The XML property list with the entry of its top dictionary replaced, added or (for no value)
/// removed, and every other byte as it is: comments, order, and values that would not survive being
/// read and written. Throws a PropertyListError for a value that cannot be stored.
std::string settingXMLEntry(std::string text, const std::string& key,
                            const std::optional<PropertyList>& value);

}  // namespace quennel
