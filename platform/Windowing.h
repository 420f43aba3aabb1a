#pragma once

#include <memory>
#include <string>

#include "platform/InstallScriptWindow.h"

namespace quennel {

class Image;
class InstallScriptCmdView;
class Pasteboard;
class Popover;

/// Windows that are more than a question: what they are made of, and what they need beside. Main
/// thread only. But for the first operation all are for the time in which a window is there.
class Windowing {
 public:
  virtual ~Windowing() = default;

  /// The window of the interface file, not shown yet and wired to `owner`, which outlives it; null
  /// with no display.
  virtual std::unique_ptr<InstallScriptWindow> loadInstallScriptWindow(
      InstallScriptWindow::Owner& owner) = 0;
  /// Never null.
  virtual std::unique_ptr<InstallScriptCmdView> loadInstallScriptCmdView() = 0;
  /// Never null.
  virtual std::unique_ptr<Popover> makePopover() = 0;

  /// Shows the window and returns after `stopModal`; at once when the run loop terminates.
  virtual void runModalForWindow(Window& window) = 0;
  /// Ends the innermost `runModalForWindow`, if there is one.
  virtual void stopModal() = 0;

  virtual Pasteboard& generalPasteboard() = 0;
  /// The icon that the desktop has for the file at `path`. Never null.
  virtual std::shared_ptr<const Image> iconForFile(const std::string& path) = 0;
};

}  // namespace quennel
