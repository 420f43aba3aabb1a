#include "platform/linux/settings/PropertyListUserDefaults.h"

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <utility>

#include "platform/linux/base/FileError.h"
#include "platform/linux/base/FileLock.h"
#include "platform/linux/base/FileReplacement.h"
#include "platform/linux/base/HomeFolder.h"
#include "platform/linux/settings/PropertyListFile.h"
#include "platform/plist/PropertyListError.h"
#include "platform/values/Path.h"

namespace quennel {
namespace {

constexpr std::chrono::seconds lockPatience(5);

std::string configurationFolder() {
  // A relative path is to be ignored.
  const char* folder = std::getenv("XDG_CONFIG_HOME");
  return folder && *folder == '/' ? folder
                                  : appendingPathComponent(homeFolder().value_or("/"), ".config");
}

/// Thrown within this file for settings that were not understood and must not be replaced.
struct UnreadableFile {
  std::string path;
};

/// Thrown within this file for a value that a property list has no form for.
struct UnstorableValue {
  std::string key;
};

/// Runs `work` and answers whether it came through, else fills `error` with the reason.
bool succeeds(Error* error, const std::function<void()>& work) {
  Error reason;
  try {
    work();
    return true;
  } catch (const UnreadableFile& failure) {
    reason = {0, Error::Kind::UnreadableSettings, failure.path};
  } catch (const UnstorableValue& failure) {
    reason = {0, Error::Kind::StoringSetting, failure.key};
  } catch (const FileError& failure) {
    reason = {failure.code().value(), Error::Kind::Writing, failure.path()};
  }
  if (error) {
    *error = std::move(reason);
  }
  return false;
}

}  // namespace

/// A change of the file from the fresh reading to the writing, under the lock all the while.
class PropertyListUserDefaults::Transaction {
 public:
  explicit Transaction(const std::string& path)
      : _path(path), _lock(lockOf(path)), _file(PropertyListFile::read(path)) {
    if (_file.state == PropertyListFile::State::Unreadable) {
      throw UnreadableFile{path};
    }
  }

  std::optional<PropertyList> objectForKey(const std::string& key) const {
    const auto& dictionary = _file.document.dictionary();
    const auto entry = dictionary.find(key);
    return entry == dictionary.end() ? std::nullopt : std::optional(entry->second);
  }

  void setObject(const std::optional<PropertyList>& value, const std::string& key) {
    const std::string before = _file.document.bytes();
    try {
      _file.document.setObject(value, key);
    } catch (const PropertyListError&) {
      throw UnstorableValue{key};
    }
    _isChanged = _isChanged || _file.document.bytes() != before;
  }

  void commit() {
    if (_isChanged) {
      replaceFile(_path, _file.document.bytes());
    }
  }

 private:
  static FileLock lockOf(const std::string& path) {
    makeFolder(deletingLastPathComponent(path));
    return {path + ".lock", lockPatience};
  }

  std::string _path;
  FileLock _lock;
  PropertyListFile _file;
  bool _isChanged = false;
};

std::string PropertyListUserDefaults::pathForDomain(const std::string& domain) {
  return appendingPathComponent(configurationFolder(), domain + ".plist");
}

PropertyListUserDefaults::PropertyListUserDefaults(std::string path) : _path(std::move(path)) {}

std::optional<PropertyList> PropertyListUserDefaults::objectForKey(std::string_view key) const {
  const auto pending = _pending.find(key);
  if (pending != _pending.end() && pending->second) {
    return pending->second;
  }
  if (pending == _pending.end()) {
    const PropertyList::Dictionary& dictionary = stored();
    const auto entry = dictionary.find(key);
    if (entry != dictionary.end()) {
      return entry->second;
    }
  }
  const auto registered = _registered.find(key);
  return registered == _registered.end() ? std::nullopt : std::optional(registered->second);
}

void PropertyListUserDefaults::registerDefaults(const PropertyList::Dictionary& defaults) {
  for (const auto& [key, value] : defaults) {
    _registered.insert_or_assign(key, value);
  }
}

void PropertyListUserDefaults::setObject(PropertyList value, const std::string& key) {
  _pending.insert_or_assign(key, std::move(value));
}

void PropertyListUserDefaults::removeObjectForKey(const std::string& key) {
  _pending.insert_or_assign(key, std::nullopt);
}

bool PropertyListUserDefaults::synchronize(Error* error) {
  if (_pending.empty()) {
    return true;
  }
  auto transaction = begin(error);
  if (!transaction || !commit(*transaction, _pending, error)) {
    return false;
  }
  _pending.clear();
  return true;
}

bool PropertyListUserDefaults::updateObjectForKey(const std::string& key, const Change& change,
                                                  Error* error) {
  auto transaction = begin(error);
  if (!transaction) {
    return false;
  }
  const Changes changes{{key, change(transaction->objectForKey(key))}};
  if (!commit(*transaction, changes, error)) {
    return false;
  }
  _pending.erase(key);
  return true;
}

const PropertyList::Dictionary& PropertyListUserDefaults::stored() const {
  if (_isStampTrusted && FileStamp::ofFile(_path) == _stamp) {
    return _stored;
  }
  PropertyListFile file = PropertyListFile::read(_path);
  _isStampTrusted = file.isStampSettled;
  _stamp = file.stamp;
  if (file.state != PropertyListFile::State::Unreadable) {
    _stored = file.document.dictionary();
  }
  return _stored;
}

std::optional<PropertyListUserDefaults::Transaction> PropertyListUserDefaults::begin(
    Error* error) const {
  std::optional<Transaction> transaction;
  succeeds(error, [&] { transaction.emplace(_path); });
  return transaction;
}

bool PropertyListUserDefaults::commit(Transaction& transaction, const Changes& changes,
                                      Error* error) {
  return succeeds(error, [&] {
    for (const auto& [key, value] : changes) {
      transaction.setObject(value, key);
    }
    transaction.commit();
    _isStampTrusted = false;
  });
}

}  // namespace quennel
