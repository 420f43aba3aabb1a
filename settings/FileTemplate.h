#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/values/Path.h"
#include "platform/values/PropertyList.h"

namespace quennel {

/// One template of the settings: a dictionary with the keys `title`, `prefix`, `suffix`,
/// `filePath`, `executable`, `enabled` and `shortcut`. It stays the record that the main
/// application wrote.
using FileTemplate = PropertyList;

/// The text under `key`, empty when the template has none.
inline std::string templateText(const FileTemplate& template_, std::string_view key) {
  const PropertyList* value = template_.objectForKey(key);
  const std::string* text = value ? value->string() : nullptr;
  return text ? *text : std::string();
}

/// The switch under `key`, off when the template has none.
inline bool templateFlag(const FileTemplate& template_, std::string_view key) {
  const PropertyList* value = template_.objectForKey(key);
  return value && value->boolValue();
}

/// The name of a file made from the template: its prefix, with its suffix if it has one.
inline std::string templateFileName(const FileTemplate& template_) {
  const std::string prefix = templateText(template_, "prefix");
  const std::string suffix = templateText(template_, "suffix");
  return suffix.empty() ? prefix : appendingPathExtension(prefix, suffix);
}

/// The template at a position of the list as it is stored, disabled ones counted and found too.
inline std::optional<FileTemplate> templateAtIndex(const std::optional<PropertyList>& stored,
                                                   std::int64_t index) {
  const PropertyList::Array* templates = stored ? stored->array() : nullptr;
  if (!templates || index < 0 || static_cast<std::uint64_t>(index) >= templates->size()) {
    return std::nullopt;
  }
  return (*templates)[static_cast<std::size_t>(index)];
}

}  // namespace quennel
