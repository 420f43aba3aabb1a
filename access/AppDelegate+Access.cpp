#include <algorithm>
#include <utility>

#include "app/AppDelegate.h"
#include "platform/SecurityScope.h"
#include "platform/UserDefaults.h"
#include "platform/values/PropertyList.h"

namespace quennel {

namespace {

constexpr const char* recordsKey = "authorizedDirs";
constexpr const char* pathKey = "path";
constexpr const char* bookmarkKey = "bookmarkData";

PropertyList::Array recordsOf(const std::optional<PropertyList>& stored) {
  const PropertyList::Array* records = stored ? stored->array() : nullptr;
  return records ? *records : PropertyList::Array();
}

bool hasRecord(const PropertyList::Array& records, const std::string& path) {
  return std::any_of(records.begin(), records.end(), [&](const PropertyList& record) {
    const PropertyList* recorded = record.objectForKey(pathKey);
    return recorded && recorded->string() && *recorded->string() == path;
  });
}

std::string withoutTrailingSlashes(std::string path) {
  while (path.size() > 1 && path.ends_with('/')) {
    path.pop_back();
  }
  return path;
}

}  // namespace

void AppDelegate::startAccessingURLs() {
  _openedURLs.clear();
  for (const PropertyList& record : recordsOf(sharedDefaults().objectForKey(recordsKey))) {
    const PropertyList* bookmark = record.objectForKey(bookmarkKey);
    const PropertyList::Data* data = bookmark ? bookmark->data() : nullptr;
    const auto url = data ? _util.urlFromBookmark(*data) : std::nullopt;
    // Once for each directory, however many records lead to it: that is how often it is stopped.
    if (url && _openedURLs.insert(*url).second) {
      _platform.securityScope.startAccessing(*url);
    }
  }
}

void AppDelegate::stopAccessingURLs() {
  for (const std::string& url : _openedURLs) {
    _platform.securityScope.stopAccessing(url);
  }
}

void AppDelegate::restartAccessingURLs() {
  stopAccessingURLs();
  startAccessingURLs();
}

void AppDelegate::workspaceDidMount() { restartAccessingURLs(); }

void AppDelegate::workspaceDidUnmount() { restartAccessingURLs(); }

void AppDelegate::saveAuthorizedURL(const std::string& url) {
  const std::string path = withoutTrailingSlashes(url);
  if (hasRecord(recordsOf(sharedDefaults().objectForKey(recordsKey)), path)) {
    return;
  }
  const auto bookmark = _util.bookmarkFromURL(path);
  if (!bookmark) {
    return;
  }
  const PropertyList::Dictionary record{{pathKey, path}, {bookmarkKey, *bookmark}};
  sharedDefaults().updateObjectForKey(recordsKey, [&](const auto& stored) {
    // Another process may have recorded it just now.
    PropertyList::Array records = recordsOf(stored);
    if (!hasRecord(records, path)) {
      records.emplace_back(record);
    }
    return PropertyList(std::move(records));
  });
}

}  // namespace quennel
