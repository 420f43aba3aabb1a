#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "platform/Error.h"
#include "platform/values/PropertyList.h"

namespace quennel {

/// One domain of settings: a persistent dictionary under string keys that other processes read and
/// write as well. Main thread only.
///
/// Reading never fails: a store that is missing reads as empty (registered defaults still show),
/// and one that cannot be understood, say because another program is just writing it in place,
/// reads as it did when it last could be. Every read sees what any process stored before it.
class UserDefaults {
 public:
  virtual ~UserDefaults() = default;

  /// The value under `key`: what this process set but did not yet store, else what is stored, else
  /// the registered default, else nothing.
  virtual std::optional<PropertyList> objectForKey(std::string_view key) const = 0;

  /// Gives every key of `defaults` a value to fall back on. Kept in memory, never stored; a later
  /// call adds to, and overrides, an earlier one.
  virtual void registerDefaults(const PropertyList::Dictionary& defaults) = 0;

  /// Sets `value` for this process at once; `synchronize` stores it.
  virtual void setObject(PropertyList value, const std::string& key) = 0;

  /// The same for the absence of a value; the registered default shows again.
  virtual void removeObjectForKey(const std::string& key) = 0;

  /// Stores what was set since the last call, and nothing else: all other keys keep what they hold
  /// in the store at that moment. Returns when it is on disk. False when it could not be stored
  /// (also when the store holds something that cannot be understood, which is then left as it is);
  /// what was set stays pending.
  virtual bool synchronize(Error* error = nullptr) = 0;

  /// A change that depends on the stored value, safe against other processes that change the same
  /// key: reads the stored value of `key` afresh (no registered default), gives it to `change`, and
  /// stores what that returns (nothing: the key is removed), all under the store's lock. What was
  /// set for this key and not yet stored is dropped: this change came later. False when it could
  /// not be stored. Exceptions of `change` pass through and leave the store as it was; it must not
  /// itself store.
  using Change = std::function<std::optional<PropertyList>(std::optional<PropertyList>)>;
  virtual bool updateObjectForKey(const std::string& key, const Change& change,
                                  Error* error = nullptr) = 0;

  /// The value as a boolean by the platform's rule (see `PropertyList::boolValue`); absent is
  /// false.
  bool boolForKey(std::string_view key) const {
    const auto value = objectForKey(key);
    return value && value->boolValue();
  }

  /// The value if it is an array (a dictionary, a string), else nothing.
  std::optional<PropertyList::Array> arrayForKey(std::string_view key) const {
    const auto value = objectForKey(key);
    return value && value->array() ? std::optional(*value->array()) : std::nullopt;
  }
  std::optional<PropertyList::Dictionary> dictionaryForKey(std::string_view key) const {
    const auto value = objectForKey(key);
    return value && value->dictionary() ? std::optional(*value->dictionary()) : std::nullopt;
  }
};

}  // namespace quennel
