#pragma once

#include <optional>
#include <string>

#include "tests/e2e/HelperTest.h"
#include "tests/support/XServer.h"

namespace quennel::test {

/// The built helper on a display with a window manager, and somebody with a keyboard and a mouse
/// before it. What is typed goes to the window that has the keyboard.
class DesktopTest : public HelperTest {
 protected:
  void SetUp() override;

  /// Waits until a window of that title, and not `otherThan`, has the keyboard and answers it; the
  /// test fails when that does not come about.
  std::string waitForWindow(const std::string& title, const std::string& otherThan = {}) const;
  /// Waits until no window of that title has the keyboard.
  void waitUntilGone(const std::string& title) const;
  /// Whether a window of that title is on the screen now.
  bool isShown(const std::string& title) const { return desktop().countWindows(title) > 0; }

  const XServer& desktop() const { return *_desktop; }

  Process::Environment environment() const override;

 private:
  std::optional<XServer> _desktop;
};

}  // namespace quennel::test
