#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/Registration.h"
#include "platform/values/PropertyList.h"

namespace quennel {

/// What other programs of the user's session may have this one do, each thing by a name and with a
/// parameter if it takes one. Main thread only.
class ApplicationActions {
 public:
  using Handler = std::function<void(const std::optional<PropertyList>& parameter)>;

  virtual ~ApplicationActions() = default;

  /// Calls `handler` on the main queue whenever the action of that name is asked for; whoever asked
  /// is answered when it has returned. An action has one handler, the last one that was added. What
  /// is asked for before there is any action waits for the first; a name without a handler is
  /// refused.
  [[nodiscard]] virtual std::unique_ptr<Registration> addAction(const std::string& name,
                                                                Handler handler) = 0;
};

}  // namespace quennel
