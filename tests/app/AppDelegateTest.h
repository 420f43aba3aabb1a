#pragma once

#include <memory>
#include <string>

#include "app/AppDelegate.h"
#include "tests/support/DesktopTest.h"

namespace quennel::test {

/// An application object on the desktop of fakes.
class AppDelegateTest : public DesktopTest {
 protected:
  /// Makes the application object, and lets it start up.
  AppDelegate& launch();
  /// A request, handled before the call returns.
  void open(const std::string& url);
  void command(const std::string& name, const std::string& object);
  bool terminated() const { return fakes.runLoop.isTerminating(); }

  std::unique_ptr<AppDelegate> delegate;
};

}  // namespace quennel::test
