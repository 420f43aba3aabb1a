#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "platform/UserDefaults.h"

namespace quennel::test {

/// Settings in memory. Several objects on one store stand for several processes.
class FakeUserDefaults : public UserDefaults {
 public:
  using Store = std::shared_ptr<PropertyList::Dictionary>;

  explicit FakeUserDefaults(PropertyList::Dictionary stored = {})
      : FakeUserDefaults(std::make_shared<PropertyList::Dictionary>(std::move(stored))) {}
  explicit FakeUserDefaults(Store store) : _store(std::move(store)) {}

  /// What other processes see, to be looked at and changed at will.
  PropertyList::Dictionary& stored() { return *_store; }

  /// Makes every storing operation fail with this error until it is set to nothing.
  void setStoreError(std::optional<Error> error) { _storeError = std::move(error); }

  /// Called at the start of every update: for what other processes do just before.
  std::function<void()> beforeUpdate;

  /// How often something was stored.
  int storeCount() const { return _storeCount; }

  std::optional<PropertyList> objectForKey(std::string_view key) const override;
  void registerDefaults(const PropertyList::Dictionary& defaults) override;
  void setObject(PropertyList value, const std::string& key) override;
  void removeObjectForKey(const std::string& key) override;
  bool synchronize(Error* error = nullptr) override;
  bool updateObjectForKey(const std::string& key, const Change& change,
                          Error* error = nullptr) override;

 private:
  bool mayStore(Error* error) const;
  void store(const std::string& key, const std::optional<PropertyList>& value);

  Store _store;
  PropertyList::Dictionary _registered;
  std::map<std::string, std::optional<PropertyList>, std::less<>> _pending;
  std::optional<Error> _storeError;
  int _storeCount = 0;
};

}  // namespace quennel::test
