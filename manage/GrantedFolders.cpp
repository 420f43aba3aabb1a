#include "manage/GrantedFolders.h"

#include <utility>

#include "settings/SharedSettings.h"

namespace quennel {
namespace {

using Array = PropertyList::Array;
using Reason = Failure::Reason;
using Check = std::optional<Failure>;

std::optional<Failure> checkFolder(const std::string& path, const FileInspector& files) {
  Failure failure{.reason = Reason::UnreadableItem, .item = path};
  const auto facts = files.factsOf(path, &failure.error);
  if (!facts) {
    return failure;
  }
  if (facts->kind != FileFacts::Kind::Folder) {
    return Failure{.reason = Reason::NotAFolder, .item = path};
  }
  return {};
}

}  // namespace

GrantedFolders::GrantedFolders(UserDefaults& settings, SecurityScope& scope,
                               const FileInspector& files, HelperConnection& helper)
    : _settings(settings), _scope(scope), _files(files), _helper(helper) {}

Result<void, Failure> GrantedFolders::change(const ListChange& change) {
  auto changed = changeStoredList(_settings, authorizedDirsKey, change);
  if (!changed) {
    return changed;
  }
  const auto told = _helper.perform(restartAccessAction);
  if (!told) {
    return Failure{.reason = Reason::HelperNotTold, .silence = told.failure()};
  }
  return {};
}

std::optional<std::string> GrantedFolders::placeOf(const AuthorizedDir& record,
                                                   Error* obstacle) const {
  const PropertyList::Data* bookmark = authorizationBookmark(record);
  return bookmark ? _scope.pathByResolvingBookmarkData(*bookmark, obstacle) : std::nullopt;
}

Result<std::vector<GrantedFolder>, Failure> GrantedFolders::all() const {
  const auto records = storedList(_settings, authorizedDirsKey);
  if (!records) {
    return records.failure();
  }
  std::vector<GrantedFolder> folders;
  for (const AuthorizedDir& record : records.value()) {
    const std::string* path = authorizedPath(record);
    Error obstacle;
    auto place = placeOf(record, &obstacle);
    folders.push_back({path ? std::optional(*path) : std::nullopt, std::move(place),
                       obstacle.code == 0 ? std::nullopt : std::optional(std::move(obstacle))});
  }
  return folders;
}

Result<void, Failure> GrantedFolders::grant(const std::string& path) {
  if (auto failure = checkFolder(path, _files)) {
    return *failure;
  }
  Failure failure{.reason = Reason::NotGrantable, .item = path};
  const auto bookmark = _scope.bookmarkDataForPath(path, &failure.error);
  if (!bookmark) {
    return failure;
  }
  return change([&](Array& records) -> Check {
    const auto record = findAuthorizedDir(records, path);
    if (record == records.end()) {
      records.push_back(makeAuthorizedDir(path, *bookmark));
    } else if (placeOf(*record) != path) {
      // The folder that was meant is gone or elsewhere; the user means the one that is there now.
      *record = makeAuthorizedDir(path, *bookmark);
    }
    return {};
  });
}

Result<void, Failure> GrantedFolders::revoke(const std::string& name, const std::string& path) {
  return change([&](Array& records) -> Check {
    const auto removed = std::erase_if(records, [&](const AuthorizedDir& record) {
      const std::string* recorded = authorizedPath(record);
      return recorded && (*recorded == name || *recorded == path);
    });
    if (removed == 0) {
      return Failure{.reason = Reason::NotGranted, .item = path};
    }
    return {};
  });
}

}  // namespace quennel
