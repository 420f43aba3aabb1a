#include "tests/app/AppDelegateTest.h"

namespace quennel::test {
namespace {

/// Requests that open a panel, and a user who answers it.
class NewFilePanel : public AppDelegateTest {
 protected:
  NewFilePanel() {
    fakes.sharedDefaults.setObject(false, "skipFilename");
    answer([](FakeSavePanel&) { return ModalResponse::OK; });
  }

  void answer(FakeSavePanel::User user) {
    fakes.userInterface.whileSavePanelShown = std::move(user);
  }
  std::uint16_t mode(const std::string& path) {
    return fakes.fileManager.attributesOfItemAtPath(path)->posixPermissions.value();
  }
};

TEST_F(NewFilePanel, ARequestThatDoesNotSkipTheNameOpensIt) {
  launch();
  open("quennel:///d?2");
  EXPECT_TRUE(exists("/d/script.sh"));
}

TEST_F(NewFilePanel, ARequestThatSkipsTheNameDoesNot) {
  fakes.sharedDefaults.setObject(true, "skipFilename");
  answer([](FakeSavePanel&) -> ModalResponse {
    ADD_FAILURE() << "a panel";
    return ModalResponse::Cancel;
  });
  launch();
  open("quennel:///d?2");
  EXPECT_TRUE(exists("/d/script.sh"));
}

TEST_F(NewFilePanel, ARequestWithoutAFolderOpensNone) {
  launch();
  delegate->handleURLEvent({.directObject = "not a url", .activationToken = {}});
  EXPECT_EQ(fakes.userInterface.activations, 0);
  EXPECT_EQ(delegate->panelCount(), 0);
}

TEST_F(NewFilePanel, TheSendersTokenBringsItToTheFront) {
  launch();
  fakes.urlEvents.receive({.directObject = "quennel:///d?0", .activationToken = "token-1"});
  fakes.runLoop.runUntilIdle();
  fakes.urlEvents.receive({.directObject = "quennel:///d?0", .activationToken = {}});
  fakes.runLoop.runUntilIdle();
  EXPECT_EQ(fakes.userInterface.activationTokens, (std::vector<std::string>{"token-1", ""}));
}

TEST_F(NewFilePanel, TheTemplateChosenInItIsTheOneThatCounts) {
  fakes.fileManager.addFile("/templates/script.sh", "#!/bin/sh\n", 0644);
  answer([](FakeSavePanel& panel) {
    panel.choose("A script");
    return ModalResponse::OK;
  });
  launch();
  open("quennel:///d?0");
  EXPECT_EQ(fakes.fileManager.contentsAtPath("/d/script.sh"), "#!/bin/sh\n");
  EXPECT_EQ(mode("/d/script.sh"), 0755);
  EXPECT_FALSE(exists("/d/untitled.txt"));
}

TEST_F(NewFilePanel, SettingsThatChangeWhileItIsOpenDoNotChangeItsTemplates) {
  answer([this](FakeSavePanel& panel) {
    fakes.sharedDefaults.setObject(PropertyList::Array{templateRecord("other", "md")},
                                   "fileTemplates");
    EXPECT_EQ(panel.menu(), (std::vector<std::string>{"A untitled", "A script"}));
    return ModalResponse::OK;
  });
  launch();
  open("quennel:///d?0");
  EXPECT_TRUE(exists("/d/untitled.txt"));
}

TEST_F(NewFilePanel, TheQuitCheckIsArmedWhenItHasClosed) {
  answer([this](FakeSavePanel&) {
    fakes.runLoop.advance(1h);
    EXPECT_FALSE(terminated());
    return ModalResponse::OK;
  });
  launch();
  open("quennel:///d?0");
  fakes.runLoop.advance(10s);
  EXPECT_FALSE(terminated());
  fakes.runLoop.advance(1s);
  EXPECT_TRUE(terminated());
}

TEST_F(NewFilePanel, AfterACancelledOneTheHelperDoesNotQuitByItself) {
  answer([](FakeSavePanel&) { return ModalResponse::Cancel; });
  launch();
  open("quennel:///d?0");
  fakes.runLoop.advance(1h);
  EXPECT_FALSE(terminated());
}

TEST_F(NewFilePanel, TwoRequestsAtOnceOpenOneOverTheOther) {
  int open = 0;
  answer([&](FakeSavePanel& panel) {
    if (++open == 1) {
      fakes.urlEvents.open("quennel:///d?2");
      fakes.runLoop.runUntilIdle();
      EXPECT_TRUE(exists("/d/script.sh")) << "made by the panel above";
      EXPECT_EQ(delegate->panelCount(), 1);
    } else {
      EXPECT_EQ(panel.name, "script");
      EXPECT_EQ(delegate->panelCount(), 2);
    }
    return ModalResponse::OK;
  });
  launch();
  this->open("quennel:///d?0");
  EXPECT_EQ(open, 2);
  EXPECT_TRUE(exists("/d/untitled.txt"));
  EXPECT_EQ(delegate->panelCount(), 0);
}

TEST_F(NewFilePanel, TheQuitCommandEndsTheHelperWhileItIsOpen) {
  answer([this](FakeSavePanel&) {
    command("net.brellow.QuennelHelper", "quit");
    EXPECT_TRUE(terminated());
    return ModalResponse::Cancel;
  });
  launch();
  open("quennel:///d?0");
  EXPECT_FALSE(exists("/d/untitled.txt"));
}

}  // namespace
}  // namespace quennel::test
