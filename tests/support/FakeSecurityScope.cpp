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
  const auto find = [&](const std::string& token) {
    return std::find_if(_folders.begin(), _folders.end(),
                        [&](const auto& entry) { return tokenFor(entry.second) == token; });
  };
  auto folder = find(bookmark.bytes);
  const auto renewal = _renewals.find(bookmark.bytes);
  if (folder == _folders.end() && renewal != _renewals.end()) {
    folder = find(renewal->second);
  }
  return folder == _folders.end() ? std::nullopt : std::optional(folder->first);
}

bool FakeSecurityScope::renewBookmark(const PropertyList::Data& bookmark, const std::string& path,
                                      Error* error) {
  renewed.push_back(path);
  const auto present = bookmarkDataForPath(path, error);
  if (present) {
    _renewals.insert_or_assign(bookmark.bytes, present->bytes);
  }
  return present.has_value();
}

class FakeSecurityScope::FakeAccess final : public Access {
 public:
  FakeAccess(FakeSecurityScope& scope, const std::string& path) : Access(path), _scope(scope) {
    _scope.started.push_back(path);
    if (_scope.whileStarting) {
      _scope.whileStarting();
    }
    _isGiven = !_scope.refusesToStart;
    if (_isGiven) {
      _scope._accessible.insert(path);
    }
  }
  FakeAccess(const FakeAccess&) = delete;
  FakeAccess& operator=(const FakeAccess&) = delete;
  ~FakeAccess() override {
    _scope.stopped.push_back(path());
    if (_isGiven) {
      _scope._accessible.erase(_scope._accessible.find(path()));
    }
  }

 private:
  FakeSecurityScope& _scope;
  bool _isGiven;
};

std::unique_ptr<SecurityScope::Access> FakeSecurityScope::startAccessing(
    const PropertyList::Data& bookmark) {
  const auto path = pathByResolvingBookmarkData(bookmark);
  return path ? std::make_unique<FakeAccess>(*this, *path) : nullptr;
}

void FakeSecurityScope::allowForThisRun(const std::string& path, Extent extent) {
  allowed.emplace_back(path, extent);
}

void FakeSecurityScope::disallow(const std::string& path) {
  std::erase_if(allowed, [&](const auto& answer) {
    return standardizingPath(answer.first) == standardizingPath(path) &&
           answer.second == Extent::Folder;
  });
}

class FakeSecurityScope::FakeStay final : public Registration {
 public:
  explicit FakeStay(int& count) : _count(count) { ++_count; }
  FakeStay(const FakeStay&) = delete;
  FakeStay& operator=(const FakeStay&) = delete;
  ~FakeStay() override { --_count; }

 private:
  int& _count;
};

std::unique_ptr<Registration> FakeSecurityScope::enterFolder(const std::string& path) {
  entered.push_back(path);
  return std::make_unique<FakeStay>(enteredNow);
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
