#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/values/PropertyList.h"

namespace quennel {

/// Where the entries of the top dictionary stand in the text of an XML property list. Finding them
/// also makes sure, before the parser sees the text, that it is well formed and within the limits
/// (PropertyListLimits.h).
struct XMLOutline {
  struct Entry {
    /// From the start of the key's opening tag to behind the value's closing tag.
    std::size_t start = 0;
    std::size_t end = 0;
    std::string key;
  };

  /// Nothing when the text is no property list whose top value is a dictionary.
  static std::optional<XMLOutline> create(std::string_view text);

  /// The dictionary's opening tag, which may be "<dict/>".
  std::size_t start = 0;
  std::size_t contentsStart = 0;
  /// In the order of the text; a key can be there more than once, and its last entry counts.
  std::vector<Entry> entries;

  bool isEmptyTag(std::string_view text) const {
    return text.substr(start, contentsStart - start).ends_with("/>");
  }
};

/// The text with the entry under `key` replaced, added or (for no value) removed, and every other
/// byte as it is: comments, order, and values that would not survive being parsed and written.
/// Throws a PropertyListError for a value that cannot be stored.
std::string settingXMLEntry(std::string text, const std::string& key,
                            const std::optional<PropertyList>& value);

}  // namespace quennel
