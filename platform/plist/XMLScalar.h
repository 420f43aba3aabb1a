#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/values/PropertyList.h"

namespace quennel {

/// The value of an element that holds text alone: "integer" and "12", for example. Nothing for a
/// name that no such element has, and a text that its kind does not allow. An empty number is zero;
/// an integer that does not fit is held at the limits.
std::optional<PropertyList> scalarOfXML(std::string_view name, const std::string& text);

/// The element for what is neither an array nor a dictionary. Throws a PropertyListError for a text
/// that XML cannot hold. Dates are written to the second.
std::string xmlOfScalar(const PropertyList& value);

}  // namespace quennel
