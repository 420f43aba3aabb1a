#pragma once

#include <systemd/sd-bus.h>

#include <optional>

#include "platform/values/PropertyList.h"

namespace quennel {

// Values on the bus: a boolean travels as "b", an integer as "x" (above the signed range "t"), a
// real number as "d", a text as "s", data as "ay", an array as "av", a dictionary as "a{sv}". Dates
// have no form there and are left out of what holds them.

/// Appends the dictionary as "a{sv}". A negative errno value when something in it cannot travel,
/// which is a text that is not UTF-8.
int appendDictionary(sd_bus_message* message, const PropertyList::Dictionary& dictionary);

/// Reads the next value, whatever its type: integers of all sizes, object paths and signatures as
/// texts, structures as arrays, variants as what they hold. Nothing when it has no property list
/// form (descriptors, dictionaries without text keys), and is then skipped, or when it is broken:
/// then nothing that follows in the message can be read.
std::optional<PropertyList> readPropertyList(sd_bus_message* message);

/// The same for what is known to be an "a{sv}"; entries that have no property list form are left
/// out, and all from the first broken one on.
PropertyList::Dictionary readDictionary(sd_bus_message* message);

}  // namespace quennel
