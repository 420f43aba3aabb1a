#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "platform/linux/desktop/DesktopWorkspace.h"
#include "tests/support/Deadline.h"
#include "tests/support/FileManagerStandIn.h"
#include "tests/support/OpenerStandIn.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/TemporaryDirectory.h"

namespace quennel::test {
namespace {

/// A session with an xdg-open that writes down what it is asked to open.
class DesktopWorkspaceTest : public testing::Test {
 protected:
  void SetUp() override {
    if (!PrivateBus::isAvailable()) {
      GTEST_SKIP() << PrivateBus::whatIsMissing;
    }
    _bus.emplace();
  }

  std::string opened() const { return _opener.opened(); }
  template <typename Condition>
  bool serveUntil(const Condition& condition) {
    return eventually([&] {
      _runLoop.serve();
      return condition();
    });
  }

  TemporaryDirectory _folder;
  OpenerStandIn _opener;
  std::optional<PrivateBus> _bus;
  EventRunLoop _runLoop;
};

TEST_F(DesktopWorkspaceTest, TheFileManagerOfTheSessionShowsTheItems) {
  FileManagerStandIn service(_runLoop, _bus->address(), FileManagerStandIn::Answer::Shown);
  SessionBus bus(_runLoop, _bus->address());
  DesktopWorkspace workspace(_runLoop, bus);
  workspace.activateFileViewerSelectingItems({"/d/a b.txt", "/d/caf\xe9"});
  ASSERT_TRUE(serveUntil([&] { return !service.shown.empty(); }));
  EXPECT_EQ(service.shown.front(),
            (std::vector<std::string>{"file:///d/a%20b.txt", "file:///d/caf%E9"}));
  EXPECT_EQ(opened(), "");
}

TEST_F(DesktopWorkspaceTest, WithoutAFileManagerTheFolderIsOpened) {
  SessionBus bus(_runLoop, _bus->address());
  DesktopWorkspace workspace(_runLoop, bus);
  workspace.activateFileViewerSelectingItems({"/d/sub/a.txt"});
  EXPECT_TRUE(serveUntil([&] { return opened() == "/d/sub\n"; })) << opened();
}

TEST_F(DesktopWorkspaceTest, WhenTheFileManagerRefusesTheFolderIsOpened) {
  FileManagerStandIn service(_runLoop, _bus->address(), FileManagerStandIn::Answer::Refused);
  SessionBus bus(_runLoop, _bus->address());
  DesktopWorkspace workspace(_runLoop, bus);
  workspace.activateFileViewerSelectingItems({"/d/sub/a.txt"});
  EXPECT_TRUE(serveUntil([&] { return opened() == "/d/sub\n"; })) << opened();
}

TEST_F(DesktopWorkspaceTest, WithoutABusTheFolderIsOpened) {
  SessionBus bus(_runLoop, "unix:path=" + (_folder / "no-bus"));
  DesktopWorkspace workspace(_runLoop, bus);
  workspace.activateFileViewerSelectingItems({"/d/sub/a.txt"});
  EXPECT_TRUE(serveUntil([&] { return opened() == "/d/sub\n"; })) << opened();
}

TEST_F(DesktopWorkspaceTest, AFileIsOpenedUnderItsOwnNameWhateverItsBytes) {
  SessionBus bus(_runLoop, _bus->address());
  DesktopWorkspace workspace(_runLoop, bus);
  EXPECT_TRUE(workspace.openFile("/d/a 'b' caf\xe9"));
  EXPECT_TRUE(serveUntil([&] { return opened() == "/d/a 'b' caf\xe9\n"; })) << opened();
}

TEST_F(DesktopWorkspaceTest, AnOpenerThatIsNotInstalledIsReported) {
  _opener.remove();
  SessionBus bus(_runLoop, _bus->address());
  DesktopWorkspace workspace(_runLoop, bus);
  EXPECT_FALSE(workspace.openFile("/d/a"));
}

}  // namespace
}  // namespace quennel::test
