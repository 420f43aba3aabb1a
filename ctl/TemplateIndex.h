#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "platform/values/PropertyList.h"

namespace quennel {

/// The list of templates as it is stored. Throws a CommandFailure when something else is stored in
/// its place.
PropertyList::Array templatesOf(const std::optional<PropertyList>& stored);

/// The number that `text` says, of a template in a list of `count`. Throws a UsageError for what is
/// no number and a CommandFailure for a place that the list does not have.
std::size_t templateIndex(const std::string& text, std::size_t count);

}  // namespace quennel
