#include "installui/InstallScriptCmdViewController.h"

namespace quennel {

void InstallScriptCmdViewController::viewDidLoad() const { textView().setUserFixedPitchFont(12); }

void InstallScriptCmdViewController::setCommandString(
    const std::optional<std::string>& command) const {
  if (command) {
    textView().setString(*command);
  }
}

}  // namespace quennel
