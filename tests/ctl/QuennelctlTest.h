#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/linux/settings/PropertyListUserDefaults.h"
#include "tests/support/PrintPropertyList.h"
#include "tests/support/Process.h"
#include "tests/support/TemporaryDirectory.h"

namespace quennel::test {

struct Answer {
  int status = 0;
  std::string output;
  std::string errors;
};

/// Runs the built program with settings of its own and, unless a test gives it one, without a
/// session bus.
class QuennelctlTest : public testing::Test {
 protected:
  using Words = std::vector<std::string>;

  QuennelctlTest();

  Process start(const Words& words) const;
  Answer run(const Words& words) const;

  /// Makes an empty file and answers its path.
  std::string makeFile(const std::string& name) const;

  /// The records of the stored templates.
  PropertyList::Array templates() const;
  /// Their titles.
  Words titles() const;

  TemporaryDirectory folder;
  std::string config = folder / "config";
  std::string settingsPath = config + "/Q4T7N2W9X5.net.brellow.Quennel.plist";
  PropertyListUserDefaults settings{settingsPath};
  Process::Environment environment;
};

}  // namespace quennel::test
