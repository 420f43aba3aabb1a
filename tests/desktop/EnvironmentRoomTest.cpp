#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/processes/EnvironmentRoom.h"
#include "tests/support/ChildProcess.h"

namespace quennel::test {
namespace {

/// Where everything stands.
struct Places {
  Places() {
    for (char** entry = environ; *entry != nullptr; ++entry) {
      entries.push_back(*entry);
    }
  }
  bool operator==(const Places&) const = default;
  bool startsLike(const Places& other) const {
    return start == other.start && entries.size() >= other.entries.size() &&
           std::equal(other.entries.begin(), other.entries.end(), entries.begin());
  }

  char** start = environ;
  std::vector<char*> entries;
};

// The address sanitizer's allocator moves all that is allocated anew.
#ifndef __SANITIZE_ADDRESS__
std::string comingsAndGoings() {
  const Places before;
  std::vector<std::unique_ptr<char[]>> others;
  for (int round = 0; round < 100; ++round) {
    setenv("QUENNEL_FIRST", std::string(static_cast<std::size_t>(round), 'x').c_str(), 1);
    setenv("QUENNEL_SECOND", "y", 1);
    if (!Places().startsLike(before)) {
      return "moved";
    }
    unsetenv("QUENNEL_FIRST");
    unsetenv("QUENNEL_SECOND");
    // What else a program allocates must not get the room.
    others.push_back(std::make_unique<char[]>(16));
  }
  return Places() == before ? "as before" : "changed";
}

TEST(RoomInTheEnvironment, LetsVariablesComeAndGoWithoutMovingOthers) {
  EXPECT_EQ(inChildProcess([] {
              makeRoomInEnvironment({"QUENNEL_FIRST", "QUENNEL_SECOND"});
              return comingsAndGoings();
            }),
            "as before");
}
#endif

TEST(RoomInTheEnvironment, LeavesTheVariablesUnset) {
  EXPECT_EQ(inChildProcess([] {
              makeRoomInEnvironment({"QUENNEL_FIRST"});
              return std::string(getenv("QUENNEL_FIRST") ? "set" : "unset");
            }),
            "unset");
}

}  // namespace
}  // namespace quennel::test
