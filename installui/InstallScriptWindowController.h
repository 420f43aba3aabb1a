#pragma once

#include <optional>
#include <string>

#include "platform/Platform.h"
#include "platform/UserInterface.h"

namespace quennel {

/// The controller of the window that guides a manual installation of the user script. Main thread
/// only.
class InstallScriptWindowController {
 public:
  explicit InstallScriptWindowController(const Platform& platform);

  /// Shows a modal alert; returns when the user has dismissed it.
  void showAlert(const std::optional<std::string>& title, const std::optional<std::string>& message,
                 AlertStyle style) const;

 private:
  Platform _platform;
};

}  // namespace quennel
