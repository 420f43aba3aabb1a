#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/values/PropertyList.h"

namespace quennel {

/// An XML property list whose top value is a dictionary: its value, and where the entries stand in
/// the text.
struct XMLPropertyList {
  struct Entry {
    /// From the start of the key's opening tag to behind the value's closing tag.
    std::size_t start = 0;
    std::size_t end = 0;
    std::string key;
  };

  /// Nothing when the text is no such file, or is beyond the limits (PropertyListLimits.h).
  static std::optional<XMLPropertyList> create(std::string_view text);

  /// Of several entries under one key the last one counts.
  PropertyList::Dictionary dictionary;

  /// The dictionary's opening tag, which may be "<dict/>".
  std::size_t start = 0;
  std::size_t contentsStart = 0;
  /// In the order of the text; a key can be there more than once.
  std::vector<Entry> entries;

  bool isEmptyTag(std::string_view text) const {
    return text.substr(start, contentsStart - start).ends_with("/>");
  }
};

}  // namespace quennel
