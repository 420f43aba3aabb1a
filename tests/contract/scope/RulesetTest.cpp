#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <thread>

#include "platform/linux/base/FileDescriptor.h"
#include "platform/linux/scope/LandlockRuleset.h"
#include "tests/contract/scope/VolumeTest.h"
#include "tests/support/ChildProcess.h"

namespace quennel::test {
namespace {

class Ruleset : public VolumeTest {
 protected:
  void SetUp() override {
    if (LandlockRuleset::kernelVersion() == 0) {
      GTEST_SKIP() << "this kernel has no Landlock";
    }
    makeFolder(allowed);
    makeFolder(outside);
  }

  /// 0 or the errno value.
  static int makeFile(const std::string& path) {
    return FileDescriptor(open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600)) ? 0 : errno;
  }

  const std::string allowed = temporary / "allowed";
  const std::string outside = temporary / "outside";
};

TEST_F(Ruleset, OfEveryVersionHoldsAThreadToWhatIsAllowed) {
  for (int version = 1; version <= LandlockRuleset::kernelVersion(); ++version) {
    LandlockRuleset ruleset(version);
    ruleset.allowBeneath(openDirectory(allowed).get());
    int codeInside = -1;
    int codeOutside = -1;
    std::thread([&] {
      ASSERT_EQ(ruleset.restrictThread(), 0);
      codeInside = makeFile(allowed + "/" + std::to_string(version));
      codeOutside = makeFile(outside + "/" + std::to_string(version));
    }).join();
    EXPECT_EQ(codeInside, 0) << version;
    EXPECT_EQ(codeOutside, EACCES) << version;
  }
}

TEST_F(Ruleset, ThatTheKernelDoesNotTakeKeepsTheWorkFromRunning) {
  scope = newScope();
  grant(allowed);
  const std::string answer = inChildProcess([&] {
    // As many confinements as a thread can have, one within the other.
    const LandlockRuleset ruleset(1);
    while (ruleset.restrictThread() == 0) {
    }
    Error error;
    const auto work = [](const std::string&) { return true; };
    const bool done = scope->performConfined(allowed + "/file", work, &error);
    return std::string(done ? "done" : "refused") + " with code " + std::to_string(error.code);
  });
  EXPECT_EQ(answer, "refused with code " + std::to_string(E2BIG));
}

}  // namespace
}  // namespace quennel::test
