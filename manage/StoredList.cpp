#include "manage/StoredList.h"

#include <utility>

namespace quennel {
namespace {

/// Thrown through the settings, which then stay as they are; never leaves this file.
struct Abandoned {
  Failure failure;
};

Result<PropertyList::Array, Failure> listIn(const std::optional<PropertyList>& stored,
                                            const std::string& key) {
  if (!stored) {
    return PropertyList::Array();
  }
  if (!stored->array()) {
    return Failure{.reason = Failure::Reason::NoList, .item = key};
  }
  return *stored->array();
}

}  // namespace

Result<PropertyList::Array, Failure> storedList(const UserDefaults& settings,
                                                const std::string& key) {
  return listIn(settings.objectForKey(key), key);
}

Result<void, Failure> changeStoredList(UserDefaults& settings, const std::string& key,
                                       const ListChange& change) {
  const auto changed = [&](const std::optional<PropertyList>& stored) {
    auto list = listIn(stored, key);
    if (!list) {
      throw Abandoned{list.failure()};
    }
    if (auto failure = change(list.value())) {
      throw Abandoned{std::move(*failure)};
    }
    return std::optional<PropertyList>(std::move(list.value()));
  };
  Failure failure{.reason = Failure::Reason::SettingsNotStored};
  try {
    if (settings.updateObjectForKey(key, changed, &failure.error)) {
      return {};
    }
  } catch (const Abandoned& abandoned) {
    return abandoned.failure;
  }
  return failure;
}

}  // namespace quennel
