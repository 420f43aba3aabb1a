#pragma once

#include <string>

namespace quennel {

/// The text itself. Throws a PropertyListError for one that no property list can hold: one that is
/// not UTF-8 or has a NUL in it.
const std::string& storable(const std::string& text);

}  // namespace quennel
