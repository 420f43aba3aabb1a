#pragma once

#include <optional>
#include <string_view>

#include "platform/values/PropertyList.h"

namespace quennel {

/// The key of the dictionary that stands for an archive's reference to one of its own objects, as
/// the XML form writes it.
inline constexpr std::string_view archiveReferenceKey = "CF$UID";

/// The top dictionary of a property list in the binary form, without the nulls in it. Nothing when
/// the bytes are none, when any object that it refers to is damaged, and beyond the limits
/// (PropertyListLimits.h).
std::optional<PropertyList::Dictionary> dictionaryOfBinary(std::string_view bytes);

}  // namespace quennel
