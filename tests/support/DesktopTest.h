#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "platform/values/PropertyList.h"
#include "tests/support/FakeDesktop.h"

namespace quennel::test {

using namespace std::chrono_literals;

/// A desktop of fakes with three templates ("untitled.txt" from index 0, a disabled one at index 1,
/// "script.sh", executable, at index 2) and an empty folder /d.
class DesktopTest : public testing::Test {
 protected:
  DesktopTest();

  bool exists(const std::string& path) const { return fakes.fileManager.fileExistsAtPath(path); }

  static PropertyList::Dictionary templateRecord(const std::string& prefix,
                                                 const std::string& suffix);

  FakeDesktop fakes;
};

}  // namespace quennel::test
