#include "access/AuthorizedDirectories.h"

#include <algorithm>
#include <iterator>
#include <utility>

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
  // Nothing that is still open ends by this: `stopAccessingURLs` comes first where it shall.
  std::move(_accesses.begin(), _accesses.end(), std::back_inserter(_earlierAccesses));
  _accesses.clear();
  _openedURLs.clear();
  for (const AuthorizedDir& record :
       authorizedDirsOf(_sharedDefaults.objectForKey(authorizedDirsKey))) {
    const PropertyList::Data* bookmark = authorizationBookmark(record);
    auto access = bookmark ? _securityScope.startAccessing(*bookmark) : nullptr;
    // One for each directory, however many records lead to it.
    if (access && _openedURLs.insert(access->path()).second) {
      _accesses.push_back(std::move(access));
    }
  }
}

void AuthorizedDirectories::stopAccessingURLs() { _accesses.clear(); }

void AuthorizedDirectories::restartAccessingURLs() {
  stopAccessingURLs();
  startAccessingURLs();
}

void AuthorizedDirectories::recordsDidChange() {
  restartAccessingURLs();
  // What a panel gave lasts for the run, unless the user has withdrawn it since.
  auto records = authorizedDirsOf(_sharedDefaults.objectForKey(authorizedDirsKey));
  std::erase_if(_authorizedPaths, [&](const std::string& path) {
    const bool isWithdrawn = findAuthorizedDir(records, path) == records.end();
    if (isWithdrawn) {
      _securityScope.disallow(path);
    }
    return isWithdrawn;
  });
}

void AuthorizedDirectories::saveAuthorizedURL(const std::string& url) {
  const std::string path = withoutTrailingSlashes(url);
  auto records = authorizedDirsOf(_sharedDefaults.objectForKey(authorizedDirsKey));
  const auto record = findAuthorizedDir(records, path);
  if (record != records.end()) {
    // Another directory may be there than the one that was recorded. The record stays; its token
    // learns of the new one, or the user would be asked in every run.
    if (const PropertyList::Data* bookmark = authorizationBookmark(*record)) {
      _securityScope.renewBookmark(*bookmark, path);
    }
    _authorizedPaths.insert(path);
    return;
  }
  const auto bookmark = _securityScope.bookmarkDataForPath(path);
  if (!bookmark) {
    return;
  }
  const bool isStored =
      _sharedDefaults.updateObjectForKey(authorizedDirsKey, [&](const auto& stored) {
        // Another process may have recorded it just now.
        PropertyList::Array present = authorizedDirsOf(stored);
        if (findAuthorizedDir(present, path) == present.end()) {
          present.push_back(makeAuthorizedDir(path, *bookmark));
        }
        return PropertyList(std::move(present));
      });
  if (isStored) {
    _authorizedPaths.insert(path);
  }
}

}  // namespace quennel
