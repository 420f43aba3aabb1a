#include <csignal>
#include <functional>
#include <string>
#include <vector>

#include "tests/e2e/desktop/DesktopTest.h"

namespace quennel::test {
namespace {

/// Requests that name no template, each with an alert above that of the one before.
class StackedAlertsFlow : public DesktopTest {
 protected:
  void expectEndAtEveryDepth(const std::function<void(const Process&)>& askForTheEnd) {
    for (const std::size_t depth : {1, 2, 6, 12}) {
      SCOPED_TRACE(depth);
      Process helper = startReadyHelper();
      open(std::vector(depth, requestFor(folder(), "99")));
      ASSERT_TRUE(eventually([&] { return desktop().countWindows("Quennel") == depth; }));
      askForTheEnd(helper);
      ASSERT_EQ(helper.wait(), 0);
      EXPECT_FALSE(isShown("Quennel"));
    }
  }
};

TEST_F(StackedAlertsFlow, TheQuitCommandEndsTheHelperAtEveryDepth) {
  expectEndAtEveryDepth([this](const Process&) { command("quit"); });
}

TEST_F(StackedAlertsFlow, ASignalEndsTheHelperAtEveryDepth) {
  expectEndAtEveryDepth([](const Process& helper) { helper.sendSignal(SIGTERM); });
}

}  // namespace
}  // namespace quennel::test
