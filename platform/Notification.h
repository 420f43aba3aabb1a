#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/values/PropertyList.h"

namespace quennel {

/// A named message between objects or programs.
struct Notification {
  std::string name;
  /// What the notification is about; for a distributed one a plain string.
  std::optional<std::string> object;
  PropertyList::Dictionary userInfo;

  using Handler = std::function<void(const Notification&)>;
};

}  // namespace quennel
