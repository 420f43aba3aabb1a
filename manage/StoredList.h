#pragma once

#include <functional>
#include <optional>
#include <string>

#include "manage/Failure.h"
#include "platform/UserDefaults.h"

namespace quennel {

/// The list stored under `key`; an empty one where nothing is stored.
Result<PropertyList::Array, Failure> storedList(const UserDefaults& settings,
                                                const std::string& key);

/// Changes the list under the lock of the settings, so that nothing that another program changes at
/// the same moment is lost. When `change` answers a failure, nothing is stored.
using ListChange = std::function<std::optional<Failure>(PropertyList::Array&)>;
Result<void, Failure> changeStoredList(UserDefaults& settings, const std::string& key,
                                       const ListChange& change);

}  // namespace quennel
