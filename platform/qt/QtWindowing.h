#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/Windowing.h"
#include "platform/qt/QtPasteboard.h"

class QEventLoop;

namespace quennel {

class Bundle;
class QtApplication;
class QtInstallScriptWindow;
class RunLoop;

/// Windows in Qt Widgets.
class QtWindowing : public Windowing {
 public:
  /// The application object, or null with no display.
  using ApplicationProvider = std::function<std::shared_ptr<QtApplication>()>;

  /// The references are not owned.
  QtWindowing(RunLoop& runLoop, const Bundle& bundle, ApplicationProvider application);

  std::unique_ptr<InstallScriptWindow> loadInstallScriptWindow(
      InstallScriptWindow::Owner& owner) override;
  std::unique_ptr<InstallScriptCmdView> loadInstallScriptCmdView() override;
  std::unique_ptr<Popover> makePopover() override;
  void runModalForWindow(Window& window) override;
  void stopModal() override;
  Pasteboard& generalPasteboard() override { return _pasteboard; }
  std::shared_ptr<const Image> iconForFile(const std::string& path) override;

 private:
  static void waitForDragToEnd(const QtInstallScriptWindow& window);

  RunLoop& _runLoop;
  const Bundle& _bundle;
  ApplicationProvider _application;
  QtPasteboard _pasteboard;
  std::vector<QEventLoop*> _modalLoops;
};

}  // namespace quennel
