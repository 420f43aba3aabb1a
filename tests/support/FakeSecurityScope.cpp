#include "tests/support/FakeSecurityScope.h"

#include <algorithm>
#include <cerrno>

#include "platform/values/Path.h"

namespace quennel::test {
namespace {

std::string tokenFor(int folder) { return "folder " + std::to_string(folder); }

bool isAtOrBelow(const std::string& path, const std::string& folder) {
  return path == folder || path.starts_with(folder == "/" ? folder : folder + "/");
}

void refuse(Error* error) {
  if (error) {
    *error = {EACCES};
  }
}

}  // namespace

void FakeSecurityScope::moveFolder(const std::string& path, const std::string& toPath) {
  auto folder = _folders.extract(path);
  folder.key() = toPath;
  _folders.insert(std::move(folder));
}

void FakeSecurityScope::showAt(const std::string& path) {
  _away.key() = path;
  _folders.insert(std::move(_away));
}

std::optional<PropertyList::Data> FakeSecurityScope::bookmarkDataForPath(const std::string& path,
                                                                         Error* error) {
  const auto folder = _folders.find(path);
  if (folder == _folders.end() || unbookmarkable.contains(path)) {
    refuse(error);
    return std::nullopt;
  }
  return PropertyList::Data{tokenFor(folder->second)};
}

std::optional<std::string> FakeSecurityScope::pathByResolvingBookmarkData(
    const PropertyList::Data& bookmark, Error*) {
  const auto folder = std::find_if(_folders.begin(), _folders.end(), [&](const auto& entry) {
    return tokenFor(entry.second) == bookmark.bytes;
  });
  if (folder == _folders.end()) {
    return std::nullopt;
  }
  _resolved.insert(folder->first);
  return folder->first;
}

bool FakeSecurityScope::startAccessing(const std::string& path) {
  started.push_back(path);
  if (whileStarting) {
    whileStarting();
  }
  if (refusesToStart || !_resolved.contains(path)) {
    return false;
  }
  _accessible.insert(path);
  return true;
}

void FakeSecurityScope::stopAccessing(const std::string& path) {
  stopped.push_back(path);
  if (const auto entry = _accessible.find(path); entry != _accessible.end()) {
    _accessible.erase(entry);
  }
}

void FakeSecurityScope::allowForThisRun(const std::string& path, Extent extent) {
  allowed.emplace_back(path, extent);
}

bool FakeSecurityScope::isAccessible(const std::string& path) const {
  return std::any_of(_accessible.begin(), _accessible.end(),
                     [&](const auto& folder) { return isAtOrBelow(path, folder); }) ||
         std::any_of(allowed.begin(), allowed.end(),
                     [&](const auto& answer) { return isAtOrBelow(path, answer.first); });
}

bool FakeSecurityScope::performConfined(const std::string& path, const Work& work, Error* error) {
  const bool isItem = std::any_of(allowed.begin(), allowed.end(), [&](const auto& answer) {
    return answer.second == Extent::Item && isAtOrBelow(path, answer.first);
  });
  if (isItem || isAccessible(deletingLastPathComponent(path))) {
    return work(path);
  }
  refuse(error);
  return false;
}

bool FakeSecurityScope::performOnItem(const std::string& path, const Work& work,
                                      Error* error) const {
  if (isAccessible(path)) {
    return work(path);
  }
  refuse(error);
  return false;
}

}  // namespace quennel::test
