#include "tests/app/AppDelegateTest.h"

namespace quennel::test {
namespace {

using DirectCreation = AppDelegateTest;

TEST_F(DirectCreation, TheAlertIsNotCountedAndTheQuitCheckFiresDuringIt) {
  launch();
  fakes.userInterface.whileShown = [this](const Alert&) {
    EXPECT_EQ(delegate->panelCount(), 0);
    fakes.runLoop.advance(11s);
    EXPECT_TRUE(terminated());
  };
  fakes.fileManager.removeItemAtPath("/templates/untitled.txt");
  open("quennel:///d?0");
  fakes.runLoop.advance(300ms);
  EXPECT_EQ(fakes.userInterface.alerts.size(), 1u);
}

}  // namespace
}  // namespace quennel::test
