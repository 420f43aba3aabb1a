#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "platform/linux/bus/BusTypes.h"
#include "platform/linux/desktop/DesktopWorkspace.h"
#include "tests/support/Deadline.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/TemporaryDirectory.h"

namespace quennel::test {
namespace {

/// A file manager on the bus that takes note of what it is to show, or refuses.
class FileManagerService {
 public:
  enum class Answer { Shown, Refused };

  FileManagerService(EventRunLoop& runLoop, const std::string& address, Answer answer)
      : _bus(runLoop, address), _answer(answer) {
    static const sd_bus_vtable methods[] = {
        SD_BUS_VTABLE_START(0),
        SD_BUS_METHOD("ShowItems", "ass", "", showItems, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_VTABLE_END};
    sd_bus_slot* slot = nullptr;
    EXPECT_GE(sd_bus_add_object_vtable(_bus.connection(), &slot, "/org/freedesktop/FileManager1",
                                       "org.freedesktop.FileManager1", methods, this),
              0);
    _object.reset(slot);
    EXPECT_GE(sd_bus_request_name(_bus.connection(), "org.freedesktop.FileManager1", 0), 0);
  }

  std::vector<std::string> shown;

 private:
  static int showItems(sd_bus_message* call, void* self, sd_bus_error* error) {
    auto& service = *static_cast<FileManagerService*>(self);
    sd_bus_message_enter_container(call, SD_BUS_TYPE_ARRAY, "s");
    for (const char* uri = nullptr; sd_bus_message_read(call, "s", &uri) > 0;) {
      service.shown.emplace_back(uri);
    }
    if (service._answer == Answer::Refused) {
      return sd_bus_error_set(error, "org.example.Refused", "not now");
    }
    return sd_bus_reply_method_return(call, "");
  }

  SessionBus _bus;
  Answer _answer;
  BusSlot _object;
};

/// A session with an xdg-open that writes down what it is asked to open.
class DesktopWorkspaceTest : public testing::Test {
 protected:
  void SetUp() override {
    if (!PrivateBus::isAvailable()) {
      GTEST_SKIP() << PrivateBus::whatIsMissing;
    }
    _bus.emplace();
    std::ofstream(_folder / "xdg-open")
        << "#!/bin/sh\nprintf '%s\\n' \"$1\" >> '" << _folder / "opened"
        << "'\n";
    std::filesystem::permissions(_folder / "xdg-open", std::filesystem::perms::owner_all);
    _path = getenv("PATH");
    setenv("PATH", (_folder.path() + ":" + _path).c_str(), 1);
  }
  void TearDown() override { setenv("PATH", _path.c_str(), 1); }

  std::string opened() const {
    std::ostringstream text;
    text << std::ifstream(_folder / "opened").rdbuf();
    return text.str();
  }
  template <typename Condition>
  bool serveUntil(const Condition& condition) {
    return eventually([&] {
      _runLoop.serve();
      return condition();
    });
  }

  TemporaryDirectory _folder;
  std::optional<PrivateBus> _bus;
  EventRunLoop _runLoop;
  std::string _path;
};

TEST_F(DesktopWorkspaceTest, TheFileManagerOfTheSessionShowsTheItems) {
  FileManagerService service(_runLoop, _bus->address(), FileManagerService::Answer::Shown);
  SessionBus bus(_runLoop, _bus->address());
  DesktopWorkspace workspace(_runLoop, bus);
  workspace.activateFileViewerSelectingItems({"/d/a b.txt", "/d/caf\xe9"});
  ASSERT_TRUE(serveUntil([&] { return !service.shown.empty(); }));
  EXPECT_EQ(service.shown, (std::vector<std::string>{"file:///d/a%20b.txt", "file:///d/caf%E9"}));
  EXPECT_EQ(opened(), "");
}

TEST_F(DesktopWorkspaceTest, WithoutAFileManagerTheFolderIsOpened) {
  SessionBus bus(_runLoop, _bus->address());
  DesktopWorkspace workspace(_runLoop, bus);
  workspace.activateFileViewerSelectingItems({"/d/sub/a.txt"});
  EXPECT_TRUE(serveUntil([&] { return opened() == "/d/sub\n"; })) << opened();
}

TEST_F(DesktopWorkspaceTest, WhenTheFileManagerRefusesTheFolderIsOpened) {
  FileManagerService service(_runLoop, _bus->address(), FileManagerService::Answer::Refused);
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
  setenv("PATH", (_folder / "nothing-here").c_str(), 1);
  SessionBus bus(_runLoop, _bus->address());
  DesktopWorkspace workspace(_runLoop, bus);
  EXPECT_FALSE(workspace.openFile("/d/a"));
}

}  // namespace
}  // namespace quennel::test
