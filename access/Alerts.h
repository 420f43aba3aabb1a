#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/UserInterface.h"

namespace quennel {

class RunLoop;

/// Shows a modal alert with the platform's default button; returns once it is dismissed.
void showAlert(UserInterface& userInterface, const std::optional<std::string>& title,
               const std::optional<std::string>& message, AlertStyle style);

/// What the rooms tell the user about failures. Main thread only; outlives the work that it puts on
/// the main queue.
class Alerts {
 public:
  Alerts(UserInterface& userInterface, RunLoop& runLoop)
      : _userInterface(userInterface), _runLoop(runLoop) {}
  Alerts(const Alerts&) = delete;
  Alerts& operator=(const Alerts&) = delete;

  /// Shows a modal alert; returns once it is dismissed.
  void showAlert(const std::optional<std::string>& title, const std::optional<std::string>& message,
                 AlertStyle style) const;

  /// Returns at once and shows a critical alert when a panel that is closing has gone away.
  /// `afterwards`, if any, is called when the user has dismissed the alert.
  void showAfterPanel(const std::string& title, const std::string& message,
                      const std::function<void()>& afterwards = nullptr) const;

 private:
  UserInterface& _userInterface;
  RunLoop& _runLoop;
};

}  // namespace quennel
