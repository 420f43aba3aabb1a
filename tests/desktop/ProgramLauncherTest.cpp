#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <sstream>
#include <string>

#include "platform/linux/processes/ProgramLauncher.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Deadline.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TemporaryDirectory.h"

namespace quennel::test {
namespace {

class ProgramLauncherTest : public testing::Test {
 protected:
  bool serveUntilAllHaveEnded() {
    return eventually([this] {
      _runLoop.serve();
      return _launcher.runningCount() == 0;
    });
  }
  std::string runAndRead(const std::string& script) {
    const std::string output = _folder / "output";
    EXPECT_TRUE(_launcher.start({"sh", "-c", "( " + script + " ) > \"$1\" 2>&1", "sh", output}));
    EXPECT_TRUE(serveUntilAllHaveEnded());
    std::ostringstream text;
    text << std::ifstream(output).rdbuf();
    return text.str();
  }

  TemporaryDirectory _folder;
  EventRunLoop _runLoop;
  ProgramLauncher _launcher{_runLoop};
};

TEST(ProgramLauncherInAProcessOfItsOwn, LeavesNoZombies) {
  EXPECT_EQ(inChildProcess([] {
              EventRunLoop runLoop;
              ProgramLauncher launcher(runLoop);
              for (int count = 0; count < 20; ++count) {
                launcher.start({"true"});
              }
              const bool allEnded = eventually([&] {
                runLoop.serve();
                return launcher.runningCount() == 0;
              });
              const bool noneLeft = waitpid(-1, nullptr, WNOHANG) < 0 && errno == ECHILD;
              return std::string(allEnded ? "ended" : "running") + (noneLeft ? "" : ", zombies");
            }),
            "ended");
}

TEST_F(ProgramLauncherTest, AProgramThatCannotBeStartedIsReported) {
  EXPECT_FALSE(_launcher.start({"/no/such/program"}));
  EXPECT_EQ(_launcher.runningCount(), 0u);
}

TEST_F(ProgramLauncherTest, AProgramStartsInTheHomeFolder) {
  const EnvironmentVariable home("HOME", _folder.path());
  EXPECT_EQ(runAndRead("pwd -P"), _folder.path() + "\n");
}

TEST_F(ProgramLauncherTest, AHomeFolderThatIsNotThereKeepsNoProgramFromStarting) {
  for (const char* const path : {"/no/such/folder", "relative", ""}) {
    const EnvironmentVariable home("HOME", path);
    EXPECT_EQ(runAndRead("echo started"), "started\n");
  }
}

TEST_F(ProgramLauncherTest, AProgramSeesNoDescriptorOfTheHelper) {
  const int inherited = dup(STDERR_FILENO);
  const auto seen = runAndRead("ls /proc/self/fd | tr '\\n' ' '");
  close(inherited);
  EXPECT_EQ(seen, "0 1 2 3 ") << "3 is the folder that ls reads";
}

TEST_F(ProgramLauncherTest, AProgramStartsWithNoSignalBlocked) {
  EXPECT_EQ(runAndRead("grep SigBlk /proc/self/status"), "SigBlk:\t0000000000000000\n");
}

TEST_F(ProgramLauncherTest, AProgramLeadsASessionOfItsOwn) {
  const auto session = runAndRead("cut -d ' ' -f 6 /proc/self/stat");
  EXPECT_NE(session, std::to_string(getsid(0)) + "\n");
}

}  // namespace
}  // namespace quennel::test
