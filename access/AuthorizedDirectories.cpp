#include "access/AuthorizedDirectories.h"

#include <utility>

#include "platform/SecurityScope.h"
#include "platform/UserDefaults.h"
#include "platform/values/PropertyList.h"
#include "settings/AuthorizedDir.h"
#include "settings/SharedSettings.h"

namespace quennel {

namespace {

std::string withoutTrailingSlashes(std::string path) {
  while (path.size() > 1 && path.ends_with('/')) {
    path.pop_back();
  }
  return path;
}

}  // namespace

void AuthorizedDirectories::startAccessingURLs() {
  _openedURLs.clear();
  for (const AuthorizedDir& record :
       authorizedDirsOf(_sharedDefaults.objectForKey(authorizedDirsKey))) {
    const PropertyList::Data* bookmark = authorizationBookmark(record);
    const auto url =
        bookmark ? _securityScope.pathByResolvingBookmarkData(*bookmark) : std::nullopt;
    // Once for each directory, however many records lead to it: that is how often it is stopped.
    if (url && _openedURLs.insert(*url).second) {
      _securityScope.startAccessing(*url);
    }
  }
}

void AuthorizedDirectories::stopAccessingURLs() {
  for (const std::string& url : _openedURLs) {
    _securityScope.stopAccessing(url);
  }
}

void AuthorizedDirectories::restartAccessingURLs() {
  stopAccessingURLs();
  startAccessingURLs();
}

void AuthorizedDirectories::saveAuthorizedURL(const std::string& url) {
  const std::string path = withoutTrailingSlashes(url);
  auto records = authorizedDirsOf(_sharedDefaults.objectForKey(authorizedDirsKey));
  if (findAuthorizedDir(records, path) != records.end()) {
    return;
  }
  const auto bookmark = _securityScope.bookmarkDataForPath(path);
  if (!bookmark) {
    return;
  }
  _sharedDefaults.updateObjectForKey(authorizedDirsKey, [&](const auto& stored) {
    // Another process may have recorded it just now.
    PropertyList::Array present = authorizedDirsOf(stored);
    if (findAuthorizedDir(present, path) == present.end()) {
      present.push_back(makeAuthorizedDir(path, *bookmark));
    }
    return PropertyList(std::move(present));
  });
}

}  // namespace quennel
