#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

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

  /// The kinds of change that a thread tries outside and that are not refused, or not by the
  /// ruleset.
  std::vector<std::string> changesMadeOutside() const {
    std::vector<std::string> made;
    const auto attempt = [&](const char* kind, int result) {
      if (result == 0 || (errno != EACCES && errno != EXDEV)) {
        made.emplace_back(kind);
      }
    };
    const auto make = [&](const char* kind, mode_t type) {
      attempt(kind, mknod((outside + "/" + kind).c_str(), type | 0600, makedev(0, 0)));
    };
    const std::string file = outside + "/file";
    attempt("opening for writing", FileDescriptor(open(file.c_str(), O_WRONLY)) ? 0 : -1);
    attempt("truncation", truncate(file.c_str(), 0));
    make("new file", S_IFREG);
    make("socket", S_IFSOCK);
    make("pipe", S_IFIFO);
    make("character device", S_IFCHR);
    make("block device", S_IFBLK);
    attempt("folder", mkdir((outside + "/folder").c_str(), 0700));
    attempt("link", symlink("file", (outside + "/link").c_str()));
    attempt("move", std::rename((outside + "/movable").c_str(), (allowed + "/moved").c_str()));
    attempt("removal of a file", unlink(file.c_str()));
    attempt("removal of a folder", rmdir((outside + "/empty").c_str()));
    return made;
  }

  const std::string allowed = temporary / "allowed";
  const std::string outside = temporary / "outside";
};

TEST_F(Ruleset, OfEveryVersionRefusesEveryKindOfChangeThatItKnows) {
  for (int version = 1; version <= LandlockRuleset::kernelVersion(); ++version) {
    writeFile(outside + "/file", "text");
    writeFile(outside + "/movable", "text");
    makeFolder(outside + "/empty");
    LandlockRuleset ruleset(version);
    ruleset.allowBeneath(openDirectory(allowed).get());
    std::vector<std::string> made;
    std::thread([&] {
      ASSERT_EQ(ruleset.restrictThread(), 0);
      made = changesMadeOutside();
    }).join();
    // The first two versions cannot restrain it.
    const std::vector<std::string> known{"truncation"};
    EXPECT_EQ(made, version < 3 ? known : std::vector<std::string>()) << version;
  }
}

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
