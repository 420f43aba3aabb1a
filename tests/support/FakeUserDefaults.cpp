#include "tests/support/FakeUserDefaults.h"

#include <utility>

namespace quennel::test {
namespace {

std::optional<PropertyList> entryOf(const PropertyList::Dictionary& dictionary,
                                    std::string_view key) {
  const auto entry = dictionary.find(key);
  return entry == dictionary.end() ? std::nullopt : std::optional(entry->second);
}

}  // namespace

std::optional<PropertyList> FakeUserDefaults::objectForKey(std::string_view key) const {
  const auto pending = _pending.find(key);
  const auto value = pending == _pending.end() ? entryOf(*_store, key) : pending->second;
  return value ? value : entryOf(_registered, key);
}

void FakeUserDefaults::registerDefaults(const PropertyList::Dictionary& defaults) {
  for (const auto& [key, value] : defaults) {
    _registered.insert_or_assign(key, value);
  }
}

void FakeUserDefaults::setObject(PropertyList value, const std::string& key) {
  _pending.insert_or_assign(key, std::move(value));
}

void FakeUserDefaults::removeObjectForKey(const std::string& key) {
  _pending.insert_or_assign(key, std::nullopt);
}

bool FakeUserDefaults::synchronize(Error* error) {
  if (_pending.empty()) {
    return true;
  }
  if (!mayStore(error)) {
    return false;
  }
  for (const auto& [key, value] : std::exchange(_pending, {})) {
    store(key, value);
  }
  ++_storeCount;
  return true;
}

bool FakeUserDefaults::updateObjectForKey(const std::string& key, const Change& change,
                                          Error* error) {
  if (beforeUpdate) {
    beforeUpdate();
  }
  if (!mayStore(error)) {
    return false;
  }
  store(key, change(entryOf(*_store, key)));
  _pending.erase(key);
  ++_storeCount;
  return true;
}

bool FakeUserDefaults::mayStore(Error* error) const {
  if (_storeError && error) {
    *error = *_storeError;
  }
  return !_storeError;
}

void FakeUserDefaults::store(const std::string& key, const std::optional<PropertyList>& value) {
  if (value) {
    _store->insert_or_assign(key, *value);
  } else {
    _store->erase(key);
  }
}

}  // namespace quennel::test
