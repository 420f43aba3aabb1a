#include <gtest/gtest.h>
#include <sys/socket.h>

#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "finderpath/DirectSaveOffer.h"
#include "finderpath/Drag.h"
#include "tests/finderpath/DropTarget.h"
#include "tests/support/Deadline.h"
#include "tests/support/XServer.h"

namespace quennel::test {
namespace {

using Behaviour = DropTarget::Behaviour;

class DragTest : public testing::Test {
 protected:
  void SetUp() override {
    if (const auto missing = XServer::missingProgram()) {
      GTEST_SKIP() << *missing << " is not installed";
    }
    _server.emplace();
    _display = XDisplay::open();
    ASSERT_TRUE(_display);
  }

  std::optional<std::string> folderOf(const DropTarget& target) {
    DirectSaveOffer offer(*_display);
    Drag drag(*_display, offer);
    auto folder = drag.folderAt(target.window(), {200, 150});
    _isSettled = drag.isSettled();
    return folder;
  }

  static bool exists(xcb_window_t window) { return XDisplay::open()->size(window).has_value(); }

  std::optional<XServer> _server;
  std::unique_ptr<XDisplay> _display;
  bool _isSettled = false;
};

TEST_F(DragTest, IsToldWhereTheFileGoes) {
  DropTarget target(Behaviour::Saves, "file:///home/me/Gr%C3%B6%C3%9Fe/");
  EXPECT_EQ(folderOf(target), "/home/me/Größe");
  EXPECT_TRUE(_isSettled);
}

TEST_F(DragTest, HandsNothingOver) {
  DropTarget target(Behaviour::Saves, "file:///d/");
  folderOf(target);
  EXPECT_EQ(target.answers(), "E");
}

TEST_F(DragTest, WaitsForTheDropToBeToldTheFolder) {
  DropTarget target(Behaviour::AsksEarly, "file:///d/");
  EXPECT_EQ(folderOf(target), "/d");
  EXPECT_EQ(target.answers(), "EE");
}

TEST_F(DragTest, TakesNoFolderThatIsNotInTheFileSystem) {
  DropTarget target(Behaviour::Saves, "sftp://host/d/");
  EXPECT_EQ(folderOf(target), std::nullopt);
}

TEST_F(DragTest, ThatIsRefusedIsToldNothing) {
  DropTarget target(Behaviour::Refuses, "file:///d/");
  EXPECT_EQ(folderOf(target), std::nullopt);
  EXPECT_TRUE(_isSettled);
}

TEST_F(DragTest, OverAWindowThatTakesNoDragsIsToldNothing) {
  DropTarget target(Behaviour::Saves, "file:///d/");
  xcb_delete_property(_display->connection(), target.window(), _display->atom("XdndAware"));
  EXPECT_EQ(folderOf(target), std::nullopt);
}

TEST_F(DragTest, LeavesNoWindowBehind) {
  DropTarget target(Behaviour::Saves, "file:///d/");
  folderOf(target);
  EXPECT_FALSE(exists(target.source()));
}

TEST_F(DragTest, DoesNotWaitForAWindowThatDoesNotAnswer) {
  DropTarget target(Behaviour::Ignores, "file:///d/");
  EXPECT_EQ(folderOf(target), std::nullopt);
  EXPECT_FALSE(_isSettled);
}

TEST_F(DragTest, LeavesItsWindowToATargetThatMayStillWriteToIt) {
  DropTarget target(Behaviour::HangsAfterDrop, "file:///d/");
  EXPECT_EQ(folderOf(target), std::nullopt);
  EXPECT_FALSE(_isSettled);
  _display.reset();
  EXPECT_TRUE(exists(target.source()));
}

TEST_F(DragTest, LeavesItsWindowEvenWhenItsProgramIsEnded) {
  DropTarget target(Behaviour::Ignores, "file:///d/");
  std::thread end([&] {
    EXPECT_TRUE(eventually([&] { return target.source() != XCB_NONE; }));
    // What the X server sees of it.
    shutdown(_display->descriptor(), SHUT_RDWR);
  });
  EXPECT_EQ(folderOf(target), std::nullopt);
  end.join();
  EXPECT_TRUE(exists(target.source()));
}

TEST_F(DragTest, OverAWindowThatIsGoneIsToldNothing) {
  auto target = std::make_unique<DropTarget>(Behaviour::Saves, "file:///d/");
  const xcb_window_t window = target->window();
  target.reset();
  DirectSaveOffer offer(*_display);
  EXPECT_EQ(Drag(*_display, offer).folderAt(window, {200, 150}), std::nullopt);
}

}  // namespace
}  // namespace quennel::test
