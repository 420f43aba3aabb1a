#pragma once

#include <optional>
#include <string_view>

#include "platform/values/PropertyList.h"

namespace quennel {

/// Small records that were archived as objects with keyed fields: a binary property list in which
/// all objects stand in one table and refer to each other by their places there.
class KeyedArchive {
 public:
  /// The root object of the archive in `data`: the texts, numbers and booleans of its fields, or of
  /// the entries of an archived dictionary, by name; a root that is itself a text, a number or a
  /// boolean comes as it is. Fields that are anything else are left out.
  ///
  /// Nothing when this is no keyed archive or it is malformed. Safe with bytes from anywhere: time
  /// and memory are bounded by a small multiple of the size of `data`, and larger data than any
  /// such record needs is not looked at.
  static std::optional<PropertyList> rootOfData(std::string_view data);
};

}  // namespace quennel
