#include "installui/InstallScriptWindowController.h"

namespace quennel {

InstallScriptWindowController::InstallScriptWindowController(const Platform& platform)
    : _platform(platform) {}

void InstallScriptWindowController::showAlert(const std::optional<std::string>& title,
                                              const std::optional<std::string>& message,
                                              AlertStyle style) const {
  _platform.userInterface.runModal(
      {.messageText = title, .informativeText = message, .alertStyle = style, .buttons = {}});
}

}  // namespace quennel
