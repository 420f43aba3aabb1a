#pragma once

#include "platform/values/PropertyList.h"

namespace quennel {

// Property lists count seconds from the start of 2001. A date is kept to the microsecond: in
// nanoseconds a double shows digits that nobody stored.

/// What is outside the range of a `PropertyList::Date`, NaN included, is held at its limits.
PropertyList::Date dateOfPropertyListSeconds(double seconds);

double propertyListSecondsOfDate(PropertyList::Date date);

}  // namespace quennel
