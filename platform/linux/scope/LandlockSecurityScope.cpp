#include "platform/linux/scope/LandlockSecurityScope.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <exception>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/linux/scope/OpenItem.h"
#include "platform/linux/scope/SealedBookmark.h"
#include "platform/values/Path.h"

namespace quennel {

namespace {

using Kind = Error::Kind;

void report(int code, Kind kind, const std::string& path, Error* error) {
  if (error) {
    *error = {code, kind, path};
  }
}

/// Runs the work on a thread that can change nothing outside the open folder. Answers 0, or the
/// errno value when there could be no such thread and the work did not run. Throws what the work
/// throws.
int runConfined(int version, int folder, const std::function<void()>& work) {
  int code = 0;
  std::exception_ptr failure;
  try {
    LandlockRuleset ruleset(version);
    ruleset.allowBeneath(folder);
    std::thread([&] {
      code = ruleset.restrictThread();
      try {
        if (code == 0) {
          work();
        }
      } catch (...) {
        failure = std::current_exception();
      }
    }).join();
  } catch (const std::system_error& refusal) {
    return refusal.code().value();
  }
  if (failure) {
    std::rethrow_exception(failure);
  }
  return code;
}

}  // namespace

/// The grants of one token, which go with it.
class LandlockSecurityScope::FolderAccess final : public Access {
 public:
  FolderAccess(Grants& grants, const std::vector<Folder>& folders)
      : Access(folders.front().path), _grants(grants) {
    for (const Folder& folder : folders) {
      _own.push_back({folder.identity, std::nullopt});
      _grants.add(_own.back());
    }
  }
  FolderAccess(const FolderAccess&) = delete;
  FolderAccess& operator=(const FolderAccess&) = delete;
  ~FolderAccess() override {
    for (const Grant& grant : _own) {
      _grants.remove(grant);
    }
  }

 private:
  Grants& _grants;
  std::vector<Grant> _own;
};

/// A folder that stands open for the length of a request.
class LandlockSecurityScope::EnteredFolder final : public Registration {
 public:
  EnteredFolder(LandlockSecurityScope& scope, const std::string& path)
      : folder(openDirectory(path)),
        granted(folder ? scope._grants.folderGranting({duplicate(folder), {}}) : FileDescriptor()),
        _scope(scope),
        _outer(std::exchange(scope._entered, this)),
        _path(withoutTrailingSlashes(path)),
        _changes(scope._grants.changes()) {}
  EnteredFolder(const EnteredFolder&) = delete;
  EnteredFolder& operator=(const EnteredFolder&) = delete;
  ~EnteredFolder() override { _scope._entered = _outer; }

  bool is(std::string_view path) const {
    return folder && path == _path && _changes == _scope._grants.changes();
  }

  const FileDescriptor folder;
  const FileDescriptor granted;

 private:
  LandlockSecurityScope& _scope;
  const EnteredFolder* _outer;
  std::string _path;
  std::uint64_t _changes;
};

LandlockSecurityScope::LandlockSecurityScope(const std::string& keyPath, int landlockVersion)
    : _key(keyPath),
      _renewals(keyPath + ".renewals"),
      _landlockVersion(std::min(landlockVersion, LandlockRuleset::kernelVersion())) {}

/// What is to be known of the folder at `path`, if a later run can know it again.
std::optional<Bookmark> LandlockSecurityScope::lastingBookmark(const std::string& path,
                                                               Error* error) const {
  auto bookmark = _resolver.bookmarkOfPath(path);
  if (bookmark && bookmark->identity.outlivesThisRun()) {
    return bookmark;
  }
  const int code = bookmark ? EOPNOTSUPP : errno;
  report(code, bookmark ? Kind::Remembering : Kind::Reading, path, error);
  return std::nullopt;
}

std::optional<PropertyList::Data> LandlockSecurityScope::bookmarkDataForPath(
    const std::string& path, Error* error) {
  const auto bookmark = lastingBookmark(path, error);
  const auto key = bookmark ? _key.readOrMake(error) : std::nullopt;
  if (!key) {
    return std::nullopt;
  }
  auto token = sealed(*bookmark, *key);
  if (!token) {
    report(ELIBACC, Kind::Remembering, path, error);
    return std::nullopt;
  }
  return PropertyList::Data{std::move(*token)};
}

std::optional<LandlockSecurityScope::Folder> LandlockSecurityScope::locate(
    const std::optional<Bookmark>& bookmark) {
  auto path = bookmark ? _resolver.pathOfBookmark(*bookmark) : std::nullopt;
  return path ? std::optional(Folder{std::move(*path), bookmark->identity}) : std::nullopt;
}

/// Its own folder and, where that is not in its place, the one that the user has authorized there
/// since. The token stands for both if the first was moved away and the second made anew.
std::vector<LandlockSecurityScope::Folder> LandlockSecurityScope::foldersOf(
    const PropertyList::Data& token, Error* error) {
  const auto key = _key.read(error);
  if (!key) {
    return {};
  }
  const auto bookmark = unsealed(token.bytes, *key);
  std::vector<Folder> folders;
  if (auto own = locate(bookmark)) {
    folders.push_back(std::move(*own));
    if (folders.front().path == bookmark->path) {
      return folders;
    }
  }
  if (auto renewed = locate(_renewals.find(token.bytes, *key))) {
    folders.push_back(std::move(*renewed));
  }
  return folders;
}

std::optional<std::string> LandlockSecurityScope::pathByResolvingBookmarkData(
    const PropertyList::Data& bookmark, Error* error) {
  auto folders = foldersOf(bookmark, error);
  return folders.empty() ? std::nullopt : std::optional(std::move(folders.front().path));
}

bool LandlockSecurityScope::renewBookmark(const PropertyList::Data& bookmark,
                                          const std::string& path, Error* error) {
  const auto present = lastingBookmark(path, error);
  const auto key = present ? _key.readOrMake(error) : std::nullopt;
  if (!key) {
    return false;
  }
  const auto own = unsealed(bookmark.bytes, *key);
  if (own && own->path != path) {
    report(EINVAL, Kind::Remembering, path, error);
    return false;
  }
  const auto folders = foldersOf(bookmark, nullptr);
  const bool leadsThere = std::any_of(folders.begin(), folders.end(), [&](const Folder& folder) {
    return folder.identity == present->identity;
  });
  return leadsThere || _renewals.keep(bookmark.bytes, *present, *key, error);
}

std::unique_ptr<SecurityScope::Access> LandlockSecurityScope::startAccessing(
    const PropertyList::Data& bookmark) {
  const auto folders = foldersOf(bookmark, nullptr);
  return folders.empty() ? nullptr : std::make_unique<FolderAccess>(_grants, folders);
}

void LandlockSecurityScope::allowForThisRun(const std::string& path, Extent extent) {
  ItemLocation location =
      extent == Extent::Item ? locationOfPath(path) : ItemLocation{openDirectory(path), {}};
  auto folder = location.folder ? identityOfDirectory(location.folder.get()) : std::nullopt;
  if (!folder) {
    return;
  }
  if (extent == Extent::Item) {
    _grants.add({std::move(*folder), std::move(location.name)});
  } else {
    const Grant grant{std::move(*folder), std::nullopt};
    _grants.add(_allowed.emplace(standardizingPath(path), grant)->second);
  }
}

void LandlockSecurityScope::disallow(const std::string& path) {
  const auto [first, last] = _allowed.equal_range(standardizingPath(path));
  std::for_each(first, last, [&](const auto& entry) { _grants.remove(entry.second); });
  _allowed.erase(first, last);
}

bool LandlockSecurityScope::isAccessible(const std::string& path) const {
  const auto item = openItem(path);
  return item && _grants.folderGranting(item->location);
}

std::unique_ptr<Registration> LandlockSecurityScope::enterFolder(const std::string& path) {
  return std::make_unique<EnteredFolder>(*this, path);
}

/// Null when it is another folder than the one that was entered, or that may have changed.
const LandlockSecurityScope::EnteredFolder* LandlockSecurityScope::enteredFolder(
    std::string_view path) const {
  return _entered && _entered->is(path) ? _entered : nullptr;
}

/// Without a folder, with errno, when it cannot be opened.
LandlockSecurityScope::Place LandlockSecurityScope::placeOfPath(const std::string& path) const {
  const PathParts parts = partsOfPath(path);
  const EnteredFolder* const entered = enteredFolder(parts.folder);
  if (entered && entered->granted && !parts.name.empty()) {
    return {{duplicate(entered->folder), std::string(parts.name)}, duplicate(entered->granted)};
  }
  Place place{locationOfPath(path), {}};
  if (place.location.folder) {
    place.granted = _grants.folderGranting(place.location);
  }
  return place;
}

bool LandlockSecurityScope::performConfined(const std::string& path, const Work& work,
                                            Error* error) {
  const Place place = placeOfPath(path);
  if (!place.location.folder) {
    report(errno, Kind::Writing, path, error);
    return false;
  }
  if (!place.granted) {
    report(EACCES, Kind::ChangingUngranted, path, error);
    return false;
  }
  if (_landlockVersion == 0) {
    return work(pathThroughDescriptor(place.location.folder.get()) + "/" + place.location.name);
  }
  bool done = false;
  const int code = runConfined(_landlockVersion, place.granted.get(), [&] { done = work(path); });
  if (code != 0) {
    report(code, Kind::Writing, path, error);
  }
  return done;
}

/// The folder itself or an item in it; nothing when that is a link, or nothing grants the folder.
FileDescriptor LandlockSecurityScope::itemOfEnteredFolder(const std::string& path) const {
  const PathParts parts = partsOfPath(path);
  const EnteredFolder* const self = enteredFolder(withoutTrailingSlashes(path));
  if (self && self->granted) {
    return duplicate(self->folder);
  }
  const EnteredFolder* const entered = enteredFolder(parts.folder);
  return entered && entered->granted && !parts.name.empty()
             ? openUnlessLink(entered->folder, std::string(parts.name))
             : FileDescriptor();
}

bool LandlockSecurityScope::performOnItem(const std::string& path, const Work& work,
                                          Error* error) const {
  if (const FileDescriptor item = itemOfEnteredFolder(path)) {
    return work(pathThroughDescriptor(item.get()));
  }
  const auto item = openItem(path);
  if (!item) {
    report(errno, Kind::ChangingAttributes, path, error);
    return false;
  }
  if (!_grants.folderGranting(item->location)) {
    report(EACCES, Kind::ChangingUngranted, path, error);
    return false;
  }
  return work(pathThroughDescriptor(item->item.get()));
}

}  // namespace quennel
