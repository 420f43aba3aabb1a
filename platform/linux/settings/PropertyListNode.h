#pragma once

#include <plist/plist.h>

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "platform/values/PropertyList.h"

namespace quennel {

/// Why a value cannot be put into a property list; a sentence for the user.
class PropertyListError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct PropertyListNodeDeleter {
  void operator()(void* node) const { plist_free(node); }
};

/// Owns a tree of the parser's own values. Unlike `PropertyList` it can hold every kind of value
/// that a file can.
using PropertyListNode = std::unique_ptr<void, PropertyListNodeDeleter>;

/// The value of the tree, without what `PropertyList` has no kind for. A reference within an
/// archive becomes the dictionary by which the XML form writes it.
std::optional<PropertyList> propertyListOfNode(plist_t node);

/// The tree for a value. Throws a PropertyListError for a text that is not UTF-8 or holds a NUL.
PropertyListNode nodeOfPropertyList(const PropertyList& value);

/// Sets the entry of a tree that is a dictionary. Throws as above.
void setEntryOfNode(plist_t dictionary, const std::string& key, const PropertyList& value);

/// A dictionary with this entry alone.
PropertyListNode nodeOfEntry(const std::string& key, const PropertyList& value);

/// Null when the bytes cannot be parsed. They must have passed the checks of XMLForm.h or
/// BinaryForm.h.
PropertyListNode nodeOfXML(std::string_view bytes);
PropertyListNode nodeOfBinary(std::string_view bytes);

/// The complete file for a tree.
std::string xmlOfNode(plist_t node);
std::string binaryOfNode(plist_t node);

}  // namespace quennel
