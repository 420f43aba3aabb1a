#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>

#include "app/AppDelegate.h"
#include "tests/support/FakePlatform.h"

namespace quennel::test {

using namespace std::chrono_literals;

/// An application object on a desktop of fakes, with three templates ("untitled.txt" from index 0,
/// a disabled one at index 1, "script.sh", executable, at index 2) and an empty folder /d.
class AppDelegateTest : public testing::Test {
 protected:
  AppDelegateTest();

  /// Makes the application object, and lets it start up.
  AppDelegate& launch();
  /// A request, handled before the call returns.
  void open(const std::string& url);
  void command(const std::string& name, const std::string& object);
  bool exists(const std::string& path) const { return fakes.fileManager.fileExistsAtPath(path); }
  bool terminated() const { return fakes.runLoop.isTerminating(); }

  static PropertyList::Dictionary templateRecord(const std::string& prefix,
                                                 const std::string& suffix);

  FakeDesktop fakes;
  std::unique_ptr<AppDelegate> delegate;
};

}  // namespace quennel::test
