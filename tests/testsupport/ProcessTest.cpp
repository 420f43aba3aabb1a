#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <system_error>

#include "tests/support/Process.h"

namespace quennel::test {
namespace {

using namespace std::chrono_literals;

TEST(Process, WaitAnswersTheExitStatus) { EXPECT_EQ(Process({"sh", "-c", "exit 3"}).wait(), 3); }

TEST(Process, WaitAnswersMinusTheSignalThatEndedTheProgram) {
  Process process({"sleep", "60"});
  EXPECT_TRUE(process.isRunning());
  EXPECT_EQ(process.terminate(), -SIGTERM);
  EXPECT_FALSE(process.isRunning());
}

TEST(Process, WaitGivesUpAtTheDeadline) {
  Process process({"sleep", "60"});
  EXPECT_EQ(process.wait(Deadline(5ms)), std::nullopt);
}

TEST(Process, KeepsOutputAndErrorOutputApart) {
  Process process({"sh", "-c", "cat; echo trouble >&2"}, {}, "text");
  EXPECT_EQ(process.wait(), 0);
  EXPECT_EQ(process.output(), "text");
  EXPECT_EQ(process.errorOutput(), "trouble\n");
}

TEST(Process, EnvironmentIsAddedToAndTakenFromOurOwn) {
  ASSERT_EQ(setenv("QUENNEL_TEST_GONE", "1", 1), 0);
  Process process({"sh", "-c", "echo \"$QUENNEL_TEST_NEW,$QUENNEL_TEST_GONE,${PATH:+path}\""},
                  {{"QUENNEL_TEST_NEW", "new"}, {"QUENNEL_TEST_GONE", ""}});
  EXPECT_EQ(process.wait(), 0);
  EXPECT_EQ(process.output(), "new,,path\n");
}

TEST(Process, WaitsForOutput) {
  const Process process({"sh", "-c", "echo ready; exec sleep 60"});
  EXPECT_TRUE(process.waitForOutput("ready\n"));
  EXPECT_FALSE(process.waitForOutput("more", Deadline(5ms)));
}

TEST(Process, AProgramThatDoesNotExistCannotBeStarted) {
  EXPECT_THROW(Process({"/nonexistent/program"}), std::system_error);
}

TEST(Process, IsKilledAndWaitedForWhenItsObjectGoes) {
  pid_t pid = 0;
  {
    const Process process({"sleep", "60"});
    pid = process.pid();
  }
  EXPECT_EQ(kill(pid, 0), -1);
  EXPECT_EQ(errno, ESRCH);
}

TEST(Process, IsInstalledLooksInThePath) {
  EXPECT_TRUE(isInstalled("sh"));
  EXPECT_FALSE(isInstalled("no such program"));
}

TEST(Eventually, GivesUpAtTheDeadlineAndSaysSo) {
  EXPECT_FALSE(eventually([] { return false; }, Deadline(3ms)));
  int looks = 0;
  EXPECT_TRUE(eventually([&] { return ++looks == 3; }));
}

}  // namespace
}  // namespace quennel::test
