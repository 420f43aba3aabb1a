#pragma once

#include <optional>
#include <string>

#include "platform/values/PropertyList.h"

namespace quennel {

/// The contents of a property-list file whose top value is a dictionary. The form in which it was
/// found, XML or binary, is kept through changes.
class PropertyListDocument {
 public:
  /// An XML file with an empty dictionary.
  PropertyListDocument();

  /// Nothing when the bytes are no such file, or exceed the limits (PropertyListLimits.h).
  static std::optional<PropertyListDocument> create(std::string bytes);

  const PropertyList::Dictionary& dictionary() const { return _dictionary; }
  const std::string& bytes() const { return _bytes; }

  /// Sets or (for no value) removes one entry and leaves everything else unharmed, values that
  /// `dictionary` cannot show included. Throws a PropertyListError, and changes nothing, for a
  /// value that cannot be stored.
  void setObject(const std::optional<PropertyList>& value, const std::string& key);

 private:
  PropertyListDocument(std::string bytes, PropertyList::Dictionary dictionary);

  std::string _bytes;
  PropertyList::Dictionary _dictionary;
};

}  // namespace quennel
