#include "platform/linux/scope/LandlockSecurityScope.h"

#include <algorithm>
#include <cerrno>
#include <exception>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/linux/scope/OpenItem.h"

namespace quennel {

namespace {

// A token is this mark, the tag over all that follows, and the bookmark.
constexpr std::string_view tokenMark = "QBm1";
constexpr std::size_t tokenHead = tokenMark.size() + MessageAuthentication::size;
constexpr std::size_t largestToken = std::size_t{16} * 1024;

using Kind = Error::Kind;

void report(int code, Kind kind, const std::string& path, Error* error) {
  if (error) {
    *error = {code, kind, path};
  }
}

std::optional<std::string> sealed(const Bookmark& bookmark, const MessageAuthentication::Key& key) {
  const std::string bytes = bytesOfBookmark(bookmark);
  const auto tag = MessageAuthentication::tagOf(bytes, key);
  if (!tag) {
    return std::nullopt;
  }
  return std::string(tokenMark) + std::string(tag->data(), tag->size()) + bytes;
}

std::optional<Bookmark> unsealed(std::string_view token, const BookmarkKey& keyFile, Error* error) {
  if (token.size() < tokenHead || token.size() > largestToken || !token.starts_with(tokenMark)) {
    return std::nullopt;
  }
  const std::string_view bytes = token.substr(tokenHead);
  const std::string_view tag = token.substr(tokenMark.size(), MessageAuthentication::size);
  const auto key = keyFile.read(error);
  return key && MessageAuthentication::isGenuine(tag, bytes, *key) ? bookmarkOfBytes(bytes)
                                                                   : std::nullopt;
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

LandlockSecurityScope::LandlockSecurityScope(std::string keyPath, int landlockVersion)
    : _key(std::move(keyPath)),
      _landlockVersion(std::min(landlockVersion, LandlockRuleset::kernelVersion())) {}

std::optional<PropertyList::Data> LandlockSecurityScope::bookmarkDataForPath(
    const std::string& path, Error* error) {
  const auto bookmark = _resolver.bookmarkOfPath(path);
  if (!bookmark || !bookmark->identity.outlivesThisRun()) {
    const int code = bookmark ? EOPNOTSUPP : errno;
    report(code, bookmark ? Kind::Remembering : Kind::Reading, path, error);
    return std::nullopt;
  }
  const auto key = _key.readOrMake(error);
  auto token = key ? sealed(*bookmark, *key) : std::nullopt;
  if (key && !token) {
    report(ELIBACC, Kind::Remembering, path, error);
  }
  return token ? std::optional(PropertyList::Data{std::move(*token)}) : std::nullopt;
}

std::optional<std::string> LandlockSecurityScope::pathByResolvingBookmarkData(
    const PropertyList::Data& bookmark, Error* error) {
  const auto folder = unsealed(bookmark.bytes, _key, error);
  auto path = folder ? _resolver.pathOfBookmark(*folder) : std::nullopt;
  if (path) {
    _resolved.insert_or_assign(*path, folder->identity);
  }
  return path;
}

bool LandlockSecurityScope::startAccessing(const std::string& path) {
  const auto resolved = _resolved.find(path);
  if (resolved == _resolved.end()) {
    return false;
  }
  const auto started = _started.emplace(path, Grant{resolved->second, std::nullopt});
  _grants.add(started->second);
  return true;
}

void LandlockSecurityScope::stopAccessing(const std::string& path) {
  const auto started = _started.find(path);
  if (started != _started.end()) {
    _grants.remove(started->second);
    _started.erase(started);
  }
}

void LandlockSecurityScope::allowForThisRun(const std::string& path, Extent extent) {
  ItemLocation location =
      extent == Extent::Item ? locationOfPath(path) : ItemLocation{openDirectory(path), {}};
  auto folder = location.folder ? identityOfDirectory(location.folder.get()) : std::nullopt;
  if (folder) {
    _grants.add({std::move(*folder),
                 extent == Extent::Item ? std::optional(std::move(location.name)) : std::nullopt});
  }
}

bool LandlockSecurityScope::isAccessible(const std::string& path) const {
  const auto item = openItem(path);
  return item && _grants.folderGranting(item->location);
}

bool LandlockSecurityScope::performConfined(const std::string& path, const Work& work,
                                            Error* error) {
  const ItemLocation location = locationOfPath(path);
  if (!location.folder) {
    report(errno, Kind::Writing, path, error);
    return false;
  }
  const FileDescriptor granted = _grants.folderGranting(location);
  if (!granted) {
    report(EACCES, Kind::ChangingUngranted, path, error);
    return false;
  }
  if (_landlockVersion == 0) {
    return work(pathThroughDescriptor(location.folder.get()) + "/" + location.name);
  }
  bool done = false;
  const int code = runConfined(_landlockVersion, granted.get(), [&] { done = work(path); });
  if (code != 0) {
    report(code, Kind::Writing, path, error);
  }
  return done;
}

bool LandlockSecurityScope::performOnItem(const std::string& path, const Work& work,
                                          Error* error) const {
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
