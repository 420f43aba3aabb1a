#pragma once

#include <algorithm>
#include <optional>
#include <string>

#include "platform/values/PropertyList.h"

namespace quennel {

/// One granted directory in the settings: a dictionary with its path and the token by which a later
/// run finds it.
using AuthorizedDir = PropertyList;

/// The action by which other programs have a running helper go by the records as they are now.
inline constexpr const char* restartAccessAction = "restart-access";

inline AuthorizedDir makeAuthorizedDir(const std::string& path, PropertyList::Data bookmark) {
  return PropertyList::Dictionary{{"path", path}, {"bookmarkData", std::move(bookmark)}};
}

/// The records as they are stored; none when there is something else in their place.
inline PropertyList::Array authorizedDirsOf(const std::optional<PropertyList>& stored) {
  const PropertyList::Array* records = stored ? stored->array() : nullptr;
  return records ? *records : PropertyList::Array();
}

inline const std::string* authorizedPath(const AuthorizedDir& record) {
  const PropertyList* path = record.objectForKey("path");
  return path ? path->string() : nullptr;
}

inline const PropertyList::Data* authorizationBookmark(const AuthorizedDir& record) {
  const PropertyList* bookmark = record.objectForKey("bookmarkData");
  return bookmark ? bookmark->data() : nullptr;
}

/// The record of exactly that path, or the end.
inline PropertyList::Array::iterator findAuthorizedDir(PropertyList::Array& records,
                                                       const std::string& path) {
  return std::find_if(records.begin(), records.end(), [&](const AuthorizedDir& record) {
    const std::string* recorded = authorizedPath(record);
    return recorded && *recorded == path;
  });
}

}  // namespace quennel
