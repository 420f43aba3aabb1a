#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/Windowing.h"
#include "tests/support/CallLog.h"
#include "tests/support/FakeInstallScriptWindow.h"

namespace quennel::test {

/// A user who closes a window at once, unless the test says what else is done in it.
class FakeWindowing : public Windowing {
 public:
  explicit FakeWindowing(CallLog& log) : _log(log) {}

  bool hasDisplay = true;
  int loadedWindows = 0;
  ShownInstallWindow installWindow;
  std::function<void()> whileWindowShown;
  bool isModal = false;
  FakePasteboard pasteboard;

  std::unique_ptr<InstallScriptWindow> loadInstallScriptWindow(
      InstallScriptWindow::Owner& owner) override {
    if (!hasDisplay) {
      return nullptr;
    }
    ++loadedWindows;
    return std::make_unique<FakeInstallScriptWindow>(owner, installWindow);
  }
  std::unique_ptr<InstallScriptCmdView> loadInstallScriptCmdView() override {
    return std::make_unique<FakeInstallScriptCmdView>(installWindow);
  }
  std::unique_ptr<Popover> makePopover() override {
    return std::make_unique<FakePopover>(installWindow);
  }

  void runModalForWindow(Window& window) override {
    _log.add("window");
    isModal = true;
    if (whileWindowShown) {
      whileWindowShown();
    }
    if (isModal) {
      window.close();
    }
  }
  void stopModal() override { isModal = false; }

  Pasteboard& generalPasteboard() override { return pasteboard; }
  std::shared_ptr<const Image> iconForFile(const std::string& path) override {
    return std::make_shared<FakeImage>("icon of " + path, Size{32, 32});
  }

 private:
  CallLog& _log;
};

}  // namespace quennel::test
