#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "platform/PopUpButton.h"
#include "platform/linux/events/EventRunLoop.h"
#include "platform/linux/ui/LazyUserInterface.h"
#include "tests/support/FakeBundle.h"
#include "tests/support/FakeUserInterface.h"
#include "tests/support/FreshSession.h"
#include "tests/support/XServer.h"

namespace quennel::test {
namespace {

constexpr const char* title = "New Text File";

/// What the user does: types a name, if any, moves the accessory on by one line if asked to, and
/// accepts.
struct Deeds {
  std::string name;
  bool takesNextTemplate = false;
};

class FakeDesktop {
 public:
  static std::optional<std::string> missingProgram() { return std::nullopt; }

  UserInterface& userInterface() { return _userInterface; }
  std::string folder() const { return "/folder"; }
  void expectUser(const std::optional<Deeds>& deeds) {
    _userInterface.whileSavePanelShown = [deeds](FakeSavePanel& panel) {
      if (!deeds) {
        return ModalResponse::Cancel;
      }
      panel.name = deeds->name.empty() ? panel.name : deeds->name;
      if (deeds->takesNextTemplate) {
        panel.accessory->chooseItemAtIndex(panel.accessory->indexOfSelectedItem() + 1);
      }
      return ModalResponse::OK;
    };
  }

 private:
  CallLog _log;
  FakeUserInterface _userInterface{_log};
};

class RealDesktop {
 public:
  static std::optional<std::string> missingProgram() { return XServer::missingProgram(); }

  ~RealDesktop() {
    if (_user.joinable()) {
      _user.join();
    }
  }

  UserInterface& userInterface() { return _userInterface; }
  std::string folder() const { return _session.home().path(); }
  void expectUser(const std::optional<Deeds>& deeds) {
    _user = std::thread([this, deeds] {
      _server.waitForActiveWindow(title);
      if (deeds && !deeds->name.empty()) {
        _server.type(deeds->name);
      }
      if (deeds && deeds->takesNextTemplate) {
        _server.pressKey("Tab");
        _server.pressKey("Down");
      }
      _server.pressKey(deeds ? "Return" : "Escape");
    });
  }

 private:
  FreshSession _session;
  XServer _server;
  EventRunLoop _loop;
  FakeBundle _bundle;
  LazyUserInterface _userInterface{_loop, _bundle, USER_INTERFACE_MODULE};
  std::thread _user;
};

template <typename Desktop>
class SavePanelContract : public testing::Test {
 protected:
  void SetUp() override {
    if (const auto program = Desktop::missingProgram()) {
      GTEST_SKIP() << "no " << *program;
    }
    desktop.emplace();
    panel = desktop->userInterface().savePanel();
    panel->setTitle(title);
    panel->setNameFieldStringValue("untitled");
    panel->setAllowedFileTypes(std::vector<std::string>{"txt"});
    panel->setExtensionHidden(true);
    panel->setDirectoryURL(desktop->folder());
    panel->setLevel(PanelLevel::AboveOthers);
    panel->setCanCreateDirectories(true);
  }

  /// The name of the file that the user agreed to; nothing after a cancel.
  std::optional<std::string> answer(const std::optional<Deeds>& deeds) {
    desktop->expectUser(deeds);
    if (panel->runModal() != ModalResponse::OK) {
      return std::nullopt;
    }
    const std::filesystem::path path(panel->path());
    EXPECT_EQ(path.parent_path(), desktop->folder());
    return path.filename();
  }

  std::optional<Desktop> desktop;
  std::unique_ptr<SavePanel> panel;
};

using Desktops = testing::Types<FakeDesktop, RealDesktop>;

TYPED_TEST_SUITE(SavePanelContract, Desktops);

TYPED_TEST(SavePanelContract, AcceptingAnswersTheProposedNameWithItsExtension) {
  EXPECT_EQ(this->answer(Deeds{}), "untitled.txt");
}

TYPED_TEST(SavePanelContract, DismissingCancels) {
  EXPECT_EQ(this->answer(std::nullopt), std::nullopt);
}

TYPED_TEST(SavePanelContract, TheExtensionIsAppendedToATypedName) {
  EXPECT_EQ(this->answer(Deeds{.name = "report.v2"}), "report.v2.txt");
}

TYPED_TEST(SavePanelContract, AnExtensionThatIsTypedIsNotAppendedAgain) {
  EXPECT_EQ(this->answer(Deeds{.name = "report.txt"}), "report.txt");
}

TYPED_TEST(SavePanelContract, WithAnyTypeAllowedTheNameStaysAsItIs) {
  this->panel->setAllowedFileTypes(std::nullopt);
  this->panel->setExtensionHidden(false);
  EXPECT_EQ(this->answer(Deeds{.name = "report"}), "report");
}

TYPED_TEST(SavePanelContract, TheAccessoryChangesThePanelWhileItIsShown) {
  PopUpButton button;
  for (const char* const suffix : {"txt", "md"}) {
    button.addItem({.title = suffix, .image = {.fileType = suffix}, .representedObject = suffix});
  }
  button.setAction([&] {
    this->panel->setNameFieldStringValue("notes");
    this->panel->setAllowedFileTypes(std::vector<std::string>{"md"});
  });
  this->panel->setAccessoryView(button);
  EXPECT_EQ(this->answer(Deeds{.name = "typed", .takesNextTemplate = true}), "notes.md");
  EXPECT_EQ(button.selectedItem()->representedObject, PropertyList("md"));
}

TEST(SavePanel, IsAbortedWhereNothingCanBeShown) {
  const FreshSession session;
  EventRunLoop loop;
  const FakeBundle bundle;
  for (const std::string module : {USER_INTERFACE_MODULE, "/no/such/module.so"}) {
    LazyUserInterface userInterface(loop, bundle, module);
    const auto panel = userInterface.savePanel();
    panel->setTitle(title);
    panel->setDirectoryURL("/folder");
    testing::internal::CaptureStderr();
    EXPECT_EQ(panel->runModal(), ModalResponse::Abort);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "New Text File (/folder)\n");
  }
}

}  // namespace
}  // namespace quennel::test
