#pragma once

#include <ostream>

#include "platform/values/PropertyList.h"

namespace quennel {

/// Shows values in the messages of failed expectations.
inline void PrintTo(const PropertyList& value, std::ostream* stream) {
  *stream << value.description();
}

}  // namespace quennel
