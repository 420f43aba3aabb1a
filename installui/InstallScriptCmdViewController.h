#pragma once

#include <optional>
#include <string>

#include "platform/Popover.h"

namespace quennel {

/// The controller of the text in the command popover. Main thread only.
class InstallScriptCmdViewController {
 public:
  /// `view` is not owned.
  explicit InstallScriptCmdViewController(InstallScriptCmdView& view) : _view(view) {}

  TextView& textView() const { return _view.textView(); }
  InstallScriptCmdView& view() const { return _view; }

  void viewDidLoad() const;
  /// Replaces the text; nothing changes nothing.
  void setCommandString(const std::optional<std::string>& command) const;

 private:
  InstallScriptCmdView& _view;
};

}  // namespace quennel
