#include "access/Alerts.h"

#include <chrono>

#include "platform/RunLoop.h"

namespace quennel {

namespace {

/// An alert that follows a panel waits until the panel has gone away.
constexpr std::chrono::milliseconds alertDelay{300};

}  // namespace

void showAlert(UserInterface& userInterface, const std::optional<std::string>& title,
               const std::optional<std::string>& message, AlertStyle style) {
  userInterface.runModal(
      {.messageText = title, .informativeText = message, .alertStyle = style, .buttons = {}});
}

void Alerts::showAlert(const std::optional<std::string>& title,
                       const std::optional<std::string>& message, AlertStyle style) const {
  quennel::showAlert(_userInterface, title, message, style);
}

void Alerts::showAfterPanel(const std::string& title, const std::string& message,
                            const std::function<void()>& afterwards) const {
  _runLoop.dispatchAfter(alertDelay, [this, title, message, afterwards] {
    showAlert(title, message, AlertStyle::Critical);
    if (afterwards) {
      afterwards();
    }
  });
}

}  // namespace quennel
