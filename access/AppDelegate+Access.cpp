#include <utility>

#include "app/AppDelegate.h"
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

void AppDelegate::startAccessingURLs() {
  _openedURLs.clear();
  for (const AuthorizedDir& record :
       authorizedDirsOf(sharedDefaults().objectForKey(authorizedDirsKey))) {
    const PropertyList::Data* bookmark = authorizationBookmark(record);
    const auto url = bookmark ? _util.urlFromBookmark(*bookmark) : std::nullopt;
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
  auto records = authorizedDirsOf(sharedDefaults().objectForKey(authorizedDirsKey));
  if (findAuthorizedDir(records, path) != records.end()) {
    return;
  }
  const auto bookmark = _util.bookmarkFromURL(path);
  if (!bookmark) {
    return;
  }
  sharedDefaults().updateObjectForKey(authorizedDirsKey, [&](const auto& stored) {
    // Another process may have recorded it just now.
    PropertyList::Array present = authorizedDirsOf(stored);
    if (findAuthorizedDir(present, path) == present.end()) {
      present.push_back(makeAuthorizedDir(path, *bookmark));
    }
    return PropertyList(std::move(present));
  });
}

}  // namespace quennel
