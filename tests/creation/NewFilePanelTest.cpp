#include <cerrno>

#include "tests/support/CreationRoom.h"
#include "tests/support/DesktopTest.h"

namespace quennel::test {
namespace {

/// Requests that open a panel, and a user who answers it.
class NewFilePanel : public DesktopTest {
 protected:
  NewFilePanel() {
    fakes.sharedDefaults.setObject(false, "skipFilename");
    answer([](FakeSavePanel&) { return ModalResponse::OK; });
  }

  void answer(FakeSavePanel::User user) {
    fakes.userInterface.whileSavePanelShown = std::move(user);
  }
  /// A request for a template that is the only one.
  void show(const PropertyList::Dictionary& record, const std::string& dir = "/d") {
    fakes.sharedDefaults.setObject(PropertyList::Array{record}, "fileTemplates");
    room.newFilePanel.showNewFilePanel(dir, record);
  }
  /// Looks at the panel and cancels it.
  void lookAt(const PropertyList::Dictionary& record,
              const std::function<void(FakeSavePanel&)>& look) {
    int shown = 0;
    answer([&](FakeSavePanel& panel) {
      ++shown;
      look(panel);
      return ModalResponse::Cancel;
    });
    show(record);
    EXPECT_EQ(shown, 1);
  }
  PropertyList::Dictionary withoutSuffix(const std::string& prefix) {
    auto record = templateRecord(prefix, "");
    record.insert_or_assign("filePath", "/templates/untitled.txt");
    return record;
  }
  std::uint16_t mode(const std::string& path) {
    return fakes.fileManager.attributesOfItemAtPath(path)->posixPermissions.value();
  }
  const Alert& onlyAlert() {
    EXPECT_EQ(fakes.userInterface.alerts.size(), 1u);
    return fakes.userInterface.alerts.at(0);
  }

  CreationRoom room{fakes};
};

TEST_F(NewFilePanel, IsNotShownForALongerPathThanAnyFolderHas) {
  answer([](FakeSavePanel&) {
    ADD_FAILURE() << "shown";
    return ModalResponse::Cancel;
  });
  show(templateRecord("untitled", "txt"), "/" + std::string(4095, 'd'));
  fakes.runLoop.advance(300ms);
  EXPECT_EQ(onlyAlert().messageText, "Error creating file!");
  EXPECT_EQ(room.panelCount.value(), 0);
}

TEST_F(NewFilePanel, IsSetUpInThisOrder) {
  lookAt(templateRecord("untitled", "txt"), [](FakeSavePanel&) {});
  EXPECT_EQ(fakes.log.calls(),
            (std::vector<std::string>{"activate", "setTitle", "setNameFieldStringValue",
                                      "setAllowedFileTypes", "setExtensionHidden",
                                      "setDirectoryURL", "setLevel", "setCanCreateDirectories",
                                      "setAccessoryView", "activate", "save panel"}));
}

TEST_F(NewFilePanel, ProposesTheNameOfTheTemplate) {
  lookAt(templateRecord("untitled", "txt"), [](FakeSavePanel& panel) {
    EXPECT_EQ(panel.title, "New A untitled");
    EXPECT_EQ(panel.name, "untitled");
    EXPECT_EQ(panel.allowedFileTypes, std::vector<std::string>{"txt"});
    EXPECT_TRUE(panel.extensionHidden);
    EXPECT_EQ(panel.directory, "/d");
    EXPECT_EQ(panel.level, PanelLevel::AboveOthers);
    EXPECT_TRUE(panel.canCreateDirectories);
  });
}

TEST_F(NewFilePanel, ATakenNameIsProposedWithANumber) {
  fakes.fileManager.addFile("/d/untitled.txt", "old");
  answer([](FakeSavePanel& panel) {
    EXPECT_EQ(panel.name, "untitled-1");
    EXPECT_TRUE(panel.extensionHidden);
    return ModalResponse::OK;
  });
  show(templateRecord("untitled", "txt"));
  EXPECT_EQ(fakes.fileManager.contentsAtPath("/d/untitled-1.txt"), "Dear reader");
  EXPECT_EQ(fakes.fileManager.contentsAtPath("/d/untitled.txt"), "old");
}

TEST_F(NewFilePanel, WithoutASuffixTheNameIsThePrefixAndAnyTypeIsAllowed) {
  lookAt(withoutSuffix("untitled"), [](FakeSavePanel& panel) {
    EXPECT_EQ(panel.name, "untitled");
    EXPECT_EQ(panel.allowedFileTypes, std::nullopt);
    EXPECT_FALSE(panel.extensionHidden);
  });
}

TEST_F(NewFilePanel, WithoutASuffixATakenNameGetsANumberToo) {
  fakes.fileManager.addFile("/d/untitled");
  lookAt(withoutSuffix("untitled"),
         [](FakeSavePanel& panel) { EXPECT_EQ(panel.name, "untitled-1"); });
}

TEST_F(NewFilePanel, WithoutASuffixWhatFollowsADotIsPartOfTheName) {
  for (const std::string prefix : {"my.project", "Makefile.am", ".profile", "notes."}) {
    lookAt(withoutSuffix(prefix), [&](FakeSavePanel& panel) { EXPECT_EQ(panel.name, prefix); });
  }
}

TEST_F(NewFilePanel, WithoutASuffixTheNumberOfATakenNameStandsBeforeItsLastDot) {
  fakes.fileManager.addFile("/d/my.project", "old");
  answer([](FakeSavePanel& panel) {
    EXPECT_EQ(panel.name, "my-1.project");
    return ModalResponse::OK;
  });
  show(withoutSuffix("my.project"));
  EXPECT_EQ(fakes.fileManager.contentsAtPath("/d/my-1.project"), "Dear reader");
  EXPECT_EQ(fakes.fileManager.contentsAtPath("/d/my.project"), "old");
}

TEST_F(NewFilePanel, ASuffixIsNotProposedBecauseThePanelAppendsIt) {
  lookAt(templateRecord("my.project", "txt"),
         [](FakeSavePanel& panel) { EXPECT_EQ(panel.name, "my.project"); });
}

TEST_F(NewFilePanel, ATemplateChosenInItIsProposedUnderANameThatIsFreeInTheFolder) {
  fakes.fileManager.addFile("/d/script.sh", "old");
  answer([](FakeSavePanel& panel) {
    panel.choose("A script");
    EXPECT_EQ(panel.name, "script-1");
    return ModalResponse::OK;
  });
  room.newFilePanel.showNewFilePanel("/d", templateRecord("untitled", "txt"));
  EXPECT_EQ(fakes.fileManager.contentsAtPath("/d/script-1.sh"), "#!/bin/sh\n");
  EXPECT_EQ(fakes.fileManager.contentsAtPath("/d/script.sh"), "old");
}

TEST_F(NewFilePanel, ATemplateWithoutANameLeavesTheNameToTheUser) {
  lookAt(withoutSuffix(""), [](FakeSavePanel& panel) { EXPECT_EQ(panel.name, ""); });
}

TEST_F(NewFilePanel, TheTitleMayBeReplacedInTheSettings) {
  fakes.sharedDefaults.setObject(PropertyList::Dictionary{{"New %@", "Nouveau %@"}},
                                 "localizedStrings");
  lookAt(templateRecord("untitled", "txt"),
         [](FakeSavePanel& panel) { EXPECT_EQ(panel.title, "Nouveau A untitled"); });
}

TEST_F(NewFilePanel, TheFolderIsKeptAsTheOneInWhichPanelsOpen) {
  show(templateRecord("untitled", "txt"));
  for (const char* const key : {"NSNavLastRootDirectory", "NSNavLastCurrentDirectory"}) {
    EXPECT_EQ(fakes.standardDefaults.objectForKey(key), PropertyList("/d"));
    EXPECT_EQ(fakes.sharedDefaults.objectForKey(key), std::nullopt);
  }
}

TEST_F(NewFilePanel, TheFolderIsKeptBeforeItOpens) {
  lookAt(templateRecord("untitled", "txt"), [this](FakeSavePanel&) {
    for (const char* const key : {"NSNavLastRootDirectory", "NSNavLastCurrentDirectory"}) {
      EXPECT_EQ(fakes.standardDefaults.objectForKey(key), PropertyList("/d"));
    }
  });
}

TEST_F(NewFilePanel, MakesTheFileUnderTheTypedName) {
  answer([](FakeSavePanel& panel) {
    panel.name = "report.v2";
    return ModalResponse::OK;
  });
  show(templateRecord("untitled", "txt"));
  EXPECT_EQ(fakes.fileManager.contentsAtPath("/d/report.v2.txt"), "Dear reader");
}

TEST_F(NewFilePanel, MakesTheFileInTheChosenFolder) {
  fakes.fileManager.addDirectory("/elsewhere");
  answer([](FakeSavePanel& panel) {
    panel.directory = "/elsewhere";
    return ModalResponse::OK;
  });
  show(templateRecord("untitled", "txt"));
  EXPECT_TRUE(exists("/elsewhere/untitled.txt"));
}

TEST_F(NewFilePanel, AnExistingFileIsReplaced) {
  fakes.fileManager.addFile("/d/letter.txt", "old", 0600);
  answer([](FakeSavePanel& panel) {
    panel.name = "letter";
    return ModalResponse::OK;
  });
  show(templateRecord("untitled", "txt"));
  EXPECT_EQ(fakes.fileManager.contentsAtPath("/d/letter.txt"), "Dear reader");
  EXPECT_EQ(mode("/d/letter.txt"), 0644);
}

TEST_F(NewFilePanel, AnExistingFolderIsReplacedWithAllItHolds) {
  fakes.fileManager.addFile("/d/letter.txt/inner", "old");
  answer([](FakeSavePanel& panel) {
    panel.name = "letter";
    return ModalResponse::OK;
  });
  show(templateRecord("untitled", "txt"));
  EXPECT_EQ(fakes.fileManager.contentsAtPath("/d/letter.txt"), "Dear reader");
}

TEST_F(NewFilePanel, AFolderTemplateIsCopiedWhole) {
  fakes.fileManager.addFile("/templates/project/src/main.c", "int main;");
  auto record = templateRecord("project", "");
  record.insert_or_assign("filePath", "/templates/project");
  show(record);
  EXPECT_EQ(fakes.fileManager.contentsAtPath("/d/project/src/main.c"), "int main;");
}

TEST_F(NewFilePanel, WithoutTemplatesInTheSettingsTheOneOfTheRequestCounts) {
  fakes.sharedDefaults.removeObjectForKey("fileTemplates");
  answer([](FakeSavePanel& panel) {
    EXPECT_TRUE(panel.menu().empty());
    return ModalResponse::OK;
  });
  room.newFilePanel.showNewFilePanel("/d", templateRecord("untitled", "txt"));
  EXPECT_TRUE(exists("/d/untitled.txt"));
}

TEST_F(NewFilePanel, ATemplateThatIsNoLongerInTheListGivesWayToTheFirst) {
  room.newFilePanel.showNewFilePanel("/d", templateRecord("gone", "txt"));
  EXPECT_EQ(fakes.fileManager.contentsAtPath("/d/gone.txt"), "Dear reader");
}

TEST_F(NewFilePanel, SettingsThatChangeWhileItIsOpenSayWhatFollows) {
  answer([this](FakeSavePanel&) {
    fakes.sharedDefaults.setObject(true, "openFileOnCreation");
    return ModalResponse::OK;
  });
  show(templateRecord("untitled", "txt"));
  EXPECT_EQ(fakes.workspace.opened, std::vector<std::string>{"/d/untitled.txt"});
}

TEST_F(NewFilePanel, ReplacementExecuteBitsDateRevealSoundAndOpenFollowInThatOrder) {
  for (const char* const key : {"openFileOnCreation", "playSound", "showFileOnCreation"}) {
    fakes.sharedDefaults.setObject(true, key);
  }
  std::size_t before = 0;
  answer([&](FakeSavePanel&) {
    fakes.fileManager.addFile("/d/untitled.txt", "made meanwhile");
    before = fakes.log.calls().size();
    return ModalResponse::OK;
  });
  show(templateRecord("untitled", "txt"));
  const auto& calls = fakes.log.calls();
  EXPECT_EQ(
      std::vector<std::string>(calls.begin() + static_cast<std::ptrdiff_t>(before), calls.end()),
      (std::vector<std::string>{"replaceItemAtPath", "setAttributes", "setAttributes", "reveal",
                                "sound", "open"}));
  EXPECT_EQ(fakes.workspace.revealed.front(), std::vector<std::string>{"/d/untitled.txt"});
  EXPECT_EQ(fakes.workspace.opened.front(), "/d/untitled.txt");
}

TEST_F(NewFilePanel, AFileMadeOnTheDesktopIsNotRevealed) {
  fakes.fileManager.addDirectory("/Users/me/Desktop");
  fakes.sharedDefaults.setObject(true, "showFileOnCreation");
  show(templateRecord("untitled", "txt"), "/Users/me/Desktop");
  EXPECT_TRUE(exists("/Users/me/Desktop/untitled.txt"));
  EXPECT_TRUE(fakes.workspace.revealed.empty());
}

TEST_F(NewFilePanel, TheNewFileCarriesTheMomentOfItsCreation) {
  fakes.fileManager.setAttributes({.modificationDate = FileAttributes::Date(1h)},
                                  "/templates/untitled.txt");
  const auto before = std::chrono::system_clock::now();
  show(templateRecord("untitled", "txt"));
  const auto attributes = fakes.fileManager.attributesOfItemAtPath("/d/untitled.txt");
  EXPECT_GE(attributes->modificationDate.value(), before);
}

TEST_F(NewFilePanel, FailuresAfterTheCopyLeaveTheFile) {
  fakes.fileManager.failNext("setAttributes");
  show(templateRecord("untitled", "txt"));
  fakes.runLoop.advance(1s);
  EXPECT_TRUE(exists("/d/untitled.txt"));
  EXPECT_TRUE(fakes.userInterface.alerts.empty());
  EXPECT_EQ(room.panelCount.value(), 0);
}

TEST_F(NewFilePanel, WhatIsChosenIsAllowedForThisRunAndNotRecorded) {
  answer([this](FakeSavePanel& panel) {
    EXPECT_TRUE(fakes.securityScope.allowed.empty());
    panel.name = "letter";
    return ModalResponse::OK;
  });
  show(templateRecord("untitled", "txt"));
  ASSERT_EQ(fakes.securityScope.allowed.size(), 1u);
  EXPECT_EQ(fakes.securityScope.allowed[0], (std::pair<std::string, SecurityScope::Extent>(
                                                "/d/letter.txt", SecurityScope::Extent::Item)));
  EXPECT_EQ(fakes.sharedDefaults.objectForKey("authorizedDirs"), std::nullopt);
}

TEST_F(NewFilePanel, AsksNobodyWhetherTheFolderIsWritable) {
  show(templateRecord("untitled", "txt"));
  EXPECT_TRUE(fakes.fileManager.askedWritable.empty());
  EXPECT_TRUE(fakes.userInterface.openPanels.empty());
}

TEST_F(NewFilePanel, IsCountedWhileItIsOpenAndNoLongerWhenTheFileIsMade) {
  answer([this](FakeSavePanel&) {
    EXPECT_EQ(room.panelCount.value(), 1);
    return ModalResponse::OK;
  });
  show(templateRecord("untitled", "txt"));
  EXPECT_EQ(room.panelCount.value(), 0);
}

TEST_F(NewFilePanel, IsCountedUntilTheNewFileHasBeenShownAndOpened) {
  for (const char* const key : {"openFileOnCreation", "playSound", "showFileOnCreation"}) {
    fakes.sharedDefaults.setObject(true, key);
  }
  std::vector<std::string> counted;
  fakes.log.during = [&](const std::string& call) {
    if (room.panelCount.value() == 1) {
      counted.push_back(call);
    }
  };
  show(templateRecord("untitled", "txt"));
  ASSERT_GE(counted.size(), 3u);
  EXPECT_EQ(std::vector(counted.end() - 3, counted.end()),
            (std::vector<std::string>{"reveal", "sound", "open"}));
  EXPECT_EQ(room.panelCount.value(), 0);
}

TEST_F(NewFilePanel, OneThatCouldNotBeShownDoesNotKeepTheHelper) {
  answer([](FakeSavePanel&) { return ModalResponse::Abort; });
  show(templateRecord("untitled", "txt"));
  EXPECT_TRUE(fakes.fileManager.calls.empty());
  EXPECT_EQ(room.panelCount.value(), 0);
}

TEST_F(NewFilePanel, CancellingMakesNothingAndLeavesItCounted) {
  answer([](FakeSavePanel&) { return ModalResponse::Cancel; });
  show(templateRecord("untitled", "txt"));
  EXPECT_TRUE(fakes.fileManager.calls.empty());
  EXPECT_TRUE(fakes.securityScope.allowed.empty());
  EXPECT_EQ(room.panelCount.value(), 1);
}

TEST_F(NewFilePanel, ARemovalThatFailsIsReportedAndLeavesItCounted) {
  answer([this](FakeSavePanel&) {
    fakes.fileManager.addFile("/d/untitled.txt", "old");
    fakes.fileManager.failNext("setAside", {EACCES, Error::Kind::Removing, "/d/untitled.txt"});
    return ModalResponse::OK;
  });
  show(templateRecord("untitled", "txt"));
  fakes.runLoop.advance(299ms);
  EXPECT_TRUE(fakes.userInterface.alerts.empty());
  fakes.runLoop.advance(1ms);
  EXPECT_EQ(onlyAlert().messageText, "Error removing existing file!");
  EXPECT_EQ(onlyAlert().informativeText,
            "“/d/untitled.txt” could not be removed: you are not allowed to.");
  EXPECT_EQ(onlyAlert().alertStyle, AlertStyle::Critical);
  EXPECT_EQ(fakes.fileManager.contentsAtPath("/d/untitled.txt"), "old");
  EXPECT_EQ(room.panelCount.value(), 1);
}

TEST_F(NewFilePanel, ACopyThatFailsIsReportedAndCountedUntilTheAlertIsDismissed) {
  fakes.userInterface.whileShown = [this](const Alert&) { EXPECT_EQ(room.panelCount.value(), 1); };
  show(templateRecord("missing", "txt"));
  EXPECT_EQ(room.panelCount.value(), 1);
  fakes.runLoop.advance(299ms);
  EXPECT_TRUE(fakes.userInterface.alerts.empty());
  fakes.runLoop.advance(1ms);
  EXPECT_EQ(onlyAlert().messageText, "Error creating file!");
  EXPECT_FALSE(onlyAlert().informativeText.value().empty());
  EXPECT_EQ(onlyAlert().alertStyle, AlertStyle::Critical);
  EXPECT_EQ(room.panelCount.value(), 0);
}

TEST_F(NewFilePanel, ACopyThatFailsLeavesTheFileThatWasToBeReplaced) {
  answer([this](FakeSavePanel&) {
    fakes.fileManager.addFile("/d/missing.txt", "old");
    return ModalResponse::OK;
  });
  fakes.sharedDefaults.setObject(true, "openFileOnCreation");
  show(templateRecord("missing", "txt"));
  fakes.runLoop.advance(300ms);
  EXPECT_EQ(fakes.fileManager.contentsAtPath("/d/missing.txt"), "old");
  EXPECT_TRUE(fakes.workspace.opened.empty());
  EXPECT_EQ(onlyAlert().messageText, "Error creating file!");
  EXPECT_EQ(room.panelCount.value(), 0);
}

TEST_F(NewFilePanel, ATemplateIsNotLostThroughALink) {
  fakes.fileManager.addLink("/tlink", "/templates");
  for (const auto& [folder, name] :
       {std::pair("/tlink", "untitled.txt"), {"/", "templates"}, {"/", "tlink"}}) {
    answer([folder = folder, name = name](FakeSavePanel& panel) {
      panel.setAllowedFileTypes(std::nullopt);
      panel.directory = folder;
      panel.name = name;
      return ModalResponse::OK;
    });
    auto record = templateRecord("untitled", "txt");
    record.insert_or_assign("filePath", "/tlink/untitled.txt");
    show(record);
    fakes.runLoop.advance(300ms);
    EXPECT_EQ(fakes.fileManager.contentsAtPath("/tlink/untitled.txt"), "Dear reader") << name;
    EXPECT_EQ(fakes.userInterface.alerts.back().messageText, "Error creating file!");
  }
}

TEST_F(NewFilePanel, OfALinkToAFolderOnlyTheLinkIsReplaced) {
  fakes.fileManager.addFile("/elsewhere/inner", "old");
  fakes.fileManager.addLink("/d/letter.txt", "/elsewhere");
  answer([](FakeSavePanel& panel) {
    panel.name = "letter";
    return ModalResponse::OK;
  });
  show(templateRecord("untitled", "txt"));
  EXPECT_EQ(fakes.fileManager.contentsAtPath("/d/letter.txt"), "Dear reader");
  EXPECT_EQ(fakes.fileManager.contentsAtPath("/elsewhere/inner"), "old");
}

TEST_F(NewFilePanel, ATemplateIsNotLostByReplacingItOrTheFolderItIsIn) {
  for (const auto& [folder, name] : {std::pair("/templates", "untitled.txt"), {"/", "templates"}}) {
    answer([folder = folder, name = name](FakeSavePanel& panel) {
      panel.setAllowedFileTypes(std::nullopt);
      panel.directory = folder;
      panel.name = name;
      return ModalResponse::OK;
    });
    show(templateRecord("untitled", "txt"));
    fakes.runLoop.advance(300ms);
    EXPECT_EQ(fakes.fileManager.contentsAtPath("/templates/untitled.txt"), "Dear reader");
    EXPECT_EQ(fakes.userInterface.alerts.back().messageText, "Error creating file!");
    EXPECT_EQ(room.panelCount.value(), 0);
  }
}

TEST_F(NewFilePanel, TheAlertsAreTranslatedByTheApplicationAlone) {
  fakes.mainBundle.translations["Error creating file!"] = "Fehler!";
  fakes.sharedDefaults.setObject(PropertyList::Dictionary{{"Error creating file!", "not this"}},
                                 "localizedStrings");
  show(templateRecord("missing", "txt"));
  fakes.runLoop.advance(300ms);
  EXPECT_EQ(onlyAlert().messageText, "Fehler!");
}

}  // namespace
}  // namespace quennel::test
