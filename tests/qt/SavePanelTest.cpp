#include <gtest/gtest.h>

#include <QtCore/QSettings>
#include <QtGui/QAccessible>
#include <QtGui/QAction>
#include <QtTest/QTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QListView>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPushButton>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/PopUpButton.h"
#include "platform/linux/events/EventRunLoop.h"
#include "platform/linux/ui/LazyUserInterface.h"
#include "tests/support/FakeBundle.h"
#include "tests/support/FreshSession.h"

namespace quennel::test {
namespace {

/// What is on screen, by the names of its parts.
struct Shown {
  explicit Shown(QFileDialog& panel) : dialog(panel) {}

  QLineEdit& name() const { return *dialog.findChild<QLineEdit*>("fileNameEdit"); }
  QComboBox& accessory() const { return *dialog.findChild<QComboBox*>("formatButton"); }
  QPushButton& save() const {
    return *dialog.findChild<QDialogButtonBox*>("buttonBox")->button(QDialogButtonBox::Save);
  }
  std::string hint() const { return dialog.findChild<QLabel*>("hint")->text().toStdString(); }
  std::string folder() const { return dialog.directory().absolutePath().toStdString(); }

  /// As the user would: over what is selected.
  void type(const std::string& text) const {
    name().selectAll();
    name().insert(QString::fromStdString(text));
  }
  void pressReturn() const { QTest::keyClick(&name(), Qt::Key_Return); }

  QFileDialog& dialog;
};

class SavePanelOnScreen : public testing::Test {
 protected:
  SavePanelOnScreen() {
    std::filesystem::create_directories(path("folder"));
    write("taken.txt");
  }

  std::string path(const std::string& name) const { return session.home() / name; }
  void write(const std::string& name) const { std::ofstream(path(name)) << name; }

  /// A panel in the home folder for a text file called "untitled".
  std::unique_ptr<SavePanel> textPanel() {
    auto panel = anyPanel();
    panel->setAllowedFileTypes(std::vector<std::string>{"txt"});
    panel->setExtensionHidden(true);
    return panel;
  }
  std::unique_ptr<SavePanel> anyPanel() {
    auto panel = userInterface.savePanel();
    panel->setTitle("New Text File");
    panel->setNameFieldStringValue("untitled");
    panel->setDirectoryURL(session.home().path());
    panel->setCanCreateDirectories(true);
    return panel;
  }

  using Look = std::function<void(const Shown&)>;

  /// Runs the panel and, once it is up, has a look at it; cancels it if `look` has not closed it.
  std::optional<std::string> run(SavePanel& panel, const Look& look) {
    loop.dispatchAsync([this, look] {
      auto* const dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
      if (!dialog) {
        loop.terminate();
        FAIL() << "no panel";
      }
      look(Shown(*dialog));
      if (dialog->isVisible()) {
        dialog->reject();
      }
    });
    return panel.runModal() == ModalResponse::OK ? std::optional(panel.path()) : std::nullopt;
  }
  std::optional<std::string> run(const Look& look) { return run(*textPanel(), look); }

  std::optional<std::string> pathAfterTyping(const std::string& text) {
    return run([&](const Shown& shown) {
      shown.type(text);
      shown.pressReturn();
    });
  }

  /// What the user does when the panel asks a question, which is looked at first.
  void answerQuestion(const std::string& button,
                      const std::function<void(QMessageBox&)>& look = nullptr) {
    loop.dispatchAsync([this, button, look] {
      auto* const question = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
      if (!question) {
        loop.terminate();
        FAIL() << "no question";
      }
      if (look) {
        look(*question);
      }
      for (QAbstractButton* const candidate : question->buttons()) {
        if (candidate->text().remove('&').toStdString() == button) {
          candidate->click();
          return;
        }
      }
      ADD_FAILURE() << "no button " << button;
      question->reject();
    });
  }

  FreshSession session;
  EnvironmentVariable platform{"QT_QPA_PLATFORM", "offscreen"};
  // The platform says at every window what it cannot do.
  EnvironmentVariable logging{"QT_LOGGING_RULES", "default.warning=false"};
  EventRunLoop loop;
  FakeBundle bundle;
  LazyUserInterface userInterface{loop, bundle, USER_INTERFACE_MODULE};
};

TEST_F(SavePanelOnScreen, ShowsTitleFolderAndTheBaseNameSelected) {
  const auto chosen = run([&](const Shown& shown) {
    EXPECT_EQ(shown.dialog.windowTitle(), "New Text File");
    EXPECT_EQ(shown.folder(), session.home().path());
    EXPECT_EQ(shown.name().text(), "untitled");
    EXPECT_EQ(shown.name().selectedText(), "untitled");
    EXPECT_EQ(shown.dialog.focusWidget(), &shown.name());
    EXPECT_EQ(shown.hint(), "Full name: untitled.txt");
  });
  EXPECT_EQ(chosen, std::nullopt);
}

TEST_F(SavePanelOnScreen, ReturnTakesWhatIsProposed) {
  EXPECT_EQ(run([](const Shown& shown) { shown.pressReturn(); }), path("untitled.txt"));
}

TEST_F(SavePanelOnScreen, AnExtensionThatIsNotHiddenIsShownButNotSelected) {
  const auto panel = textPanel();
  panel->setExtensionHidden(false);
  const auto chosen = run(*panel, [](const Shown& shown) {
    EXPECT_EQ(shown.name().text(), "untitled.txt");
    EXPECT_EQ(shown.name().selectedText(), "untitled");
    shown.pressReturn();
  });
  EXPECT_EQ(chosen, path("untitled.txt"));
}

TEST_F(SavePanelOnScreen, TheExtensionIsAppendedUnlessItIsThere) {
  EXPECT_EQ(pathAfterTyping("report"), path("report.txt"));
  EXPECT_EQ(pathAfterTyping("report.v2"), path("report.v2.txt"));
  EXPECT_EQ(pathAfterTyping("report.txt"), path("report.txt"));
  EXPECT_EQ(pathAfterTyping("REPORT.TXT"), path("REPORT.TXT"));
  EXPECT_EQ(pathAfterTyping("Übersicht 文件"), path("Übersicht 文件.txt"));
  EXPECT_EQ(pathAfterTyping("  report "), path("report.txt"));
}

TEST_F(SavePanelOnScreen, AnyOfTheAllowedExtensionsMayBeTyped) {
  const auto panel = textPanel();
  panel->setAllowedFileTypes(std::vector<std::string>{"jpg", "jpeg"});
  for (const auto& [typed, name] :
       {std::pair("photo.jpeg", "photo.jpeg"), {"photo", "photo.jpg"}}) {
    const auto chosen = run(*panel, [typed = typed](const Shown& shown) {
      shown.type(typed);
      shown.pressReturn();
    });
    EXPECT_EQ(chosen, path(name));
  }
}

TEST_F(SavePanelOnScreen, WithoutATypeTheNameIsTakenAsItIsTyped) {
  const auto chosen = run(*anyPanel(), [](const Shown& shown) {
    shown.type("Makefile.am");
    shown.pressReturn();
  });
  EXPECT_EQ(chosen, path("Makefile.am"));
}

TEST_F(SavePanelOnScreen, ANameWithASlashLeadsToAnotherFolder) {
  EXPECT_EQ(pathAfterTyping("folder/report"), path("folder/report.txt"));
  EXPECT_EQ(pathAfterTyping("folder/../report"), path("report.txt"));
  EXPECT_EQ(pathAfterTyping(path("folder/report")), path("folder/report.txt"));
  EXPECT_EQ(pathAfterTyping("~/report"), path("report.txt")) << "the home folder";
}

TEST_F(SavePanelOnScreen, APathThatIsAFolderIsGoneTo) {
  for (const std::string& typed :
       {std::string("folder/"), std::string("folder/."), path("folder")}) {
    const auto chosen = run([&](const Shown& shown) {
      shown.type(typed);
      EXPECT_EQ(shown.save().text(), "&Open");
      shown.pressReturn();
      EXPECT_TRUE(shown.dialog.isVisible());
      EXPECT_EQ(shown.folder(), path("folder"));
      EXPECT_EQ(shown.name().text(), "");
      shown.type("report");
      shown.pressReturn();
    });
    EXPECT_EQ(chosen, path("folder/report.txt")) << typed;
  }
}

TEST_F(SavePanelOnScreen, TheNameOfAFolderIsANameLikeAnyOther) {
  EXPECT_EQ(run([](const Shown& shown) {
              shown.type("folder");
              EXPECT_EQ(shown.save().text(), "&Save");
              shown.pressReturn();
            }),
            path("folder.txt"));
}

TEST_F(SavePanelOnScreen, AnEmptyNameCannotBeSaved) {
  const auto chosen = run([](const Shown& shown) {
    for (const char* const empty : {" ", ""}) {
      shown.name().setText(empty);
      EXPECT_FALSE(shown.save().isEnabled());
      EXPECT_EQ(shown.hint(), "");
      shown.pressReturn();
      EXPECT_TRUE(shown.dialog.isVisible());
    }
  });
  EXPECT_EQ(chosen, std::nullopt);
}

TEST_F(SavePanelOnScreen, AFolderThatIsMissingIsNamed) {
  const auto chosen = run([&](const Shown& shown) {
    for (const char* const typed : {"missing/report", "missing/"}) {
      shown.type(typed);
      shown.pressReturn();
      EXPECT_TRUE(shown.dialog.isVisible());
      EXPECT_EQ(shown.hint(), "There is no folder “" + path("missing") + "”.") << typed;
    }
    shown.type("report");
    EXPECT_EQ(shown.hint(), "Full name: report.txt");
    shown.pressReturn();
  });
  EXPECT_EQ(chosen, path("report.txt"));
}

TEST_F(SavePanelOnScreen, ANameMayBeAsLongAsTheFilesystemTakes) {
  const auto chosen = run([](const Shown& shown) {
    shown.type(std::string(252, 'n'));
    shown.pressReturn();
    EXPECT_TRUE(shown.dialog.isVisible());
    EXPECT_EQ(shown.hint(), "The name is too long.");
    EXPECT_LT(shown.dialog.width(), 1000);
    shown.type(std::string(251, 'n'));
    shown.pressReturn();
  });
  EXPECT_EQ(chosen, path(std::string(251, 'n') + ".txt"));
}

TEST_F(SavePanelOnScreen, ReplacingIsAskedAboutForTheFinalName) {
  std::string question;
  const auto chosen = run([&](const Shown& shown) {
    answerQuestion("Replace", [&](QMessageBox& box) {
      question = box.text().toStdString();
      EXPECT_EQ(box.informativeText(), "What it holds now will be lost.");
      EXPECT_EQ(box.textFormat(), Qt::PlainText);
      EXPECT_EQ(box.defaultButton(), box.button(QMessageBox::Cancel));
    });
    shown.type("taken");
    shown.pressReturn();
  });
  EXPECT_EQ(chosen, path("taken.txt"));
  EXPECT_EQ(question, "“taken.txt” exists already. Do you want to replace it?");
}

TEST_F(SavePanelOnScreen, WhoeverDoesNotReplaceIsBackInThePanel) {
  const auto chosen = run([&](const Shown& shown) {
    answerQuestion("Cancel");
    shown.type("taken");
    shown.pressReturn();
    EXPECT_TRUE(shown.dialog.isVisible());
    EXPECT_EQ(shown.name().text(), "taken");
    shown.type("free");
    shown.pressReturn();
  });
  EXPECT_EQ(chosen, path("free.txt"));
}

TEST_F(SavePanelOnScreen, TheQuestionSaysWhenAFolderWouldBeLost) {
  const auto chosen = run(*anyPanel(), [&](const Shown& shown) {
    answerQuestion("Replace", [](QMessageBox& box) {
      EXPECT_EQ(box.informativeText(), "It is a folder. Everything in it will be removed.");
    });
    shown.type("folder");
    shown.pressReturn();
  });
  EXPECT_EQ(chosen, path("folder"));
}

TEST_F(SavePanelOnScreen, TheQuestionSaysThatOfALinkOnlyTheLinkIsLost) {
  std::filesystem::create_symlink(path("folder"), path("link"));
  const auto chosen = run(*anyPanel(), [&](const Shown& shown) {
    answerQuestion("Replace", [](QMessageBox& box) {
      EXPECT_EQ(box.informativeText(),
                "It is a link. Only the link will be removed, not what it leads to.");
    });
    shown.type("link");
    shown.pressReturn();
  });
  EXPECT_EQ(chosen, path("link"));
}

TEST_F(SavePanelOnScreen, ALongNameIsShownByItsStartAndItsEnd) {
  const std::string name = "start" + std::string(200, 'W') + "end";
  write(name + ".txt");
  run([&](const Shown& shown) {
    answerQuestion("Cancel", [](QMessageBox& box) {
      EXPECT_LT(box.width(), 1000);
      EXPECT_TRUE(box.text().contains("end.txt”"));
    });
    shown.type(name);
    EXPECT_TRUE(QString::fromStdString(shown.hint()).startsWith("Full name: start"));
    EXPECT_TRUE(QString::fromStdString(shown.hint()).endsWith("end.txt"));
    shown.pressReturn();
  });
}

TEST_F(SavePanelOnScreen, AssistiveTechnologyIsToldWhatTheNameComesTo) {
  run([](const Shown& shown) {
    shown.type("report");
    EXPECT_EQ(shown.name().accessibleDescription(), "Full name: report.txt");
    shown.type("missing/report");
    shown.pressReturn();
    EXPECT_TRUE(shown.name().accessibleDescription().startsWith("There is no folder"));
  });
}

TEST_F(SavePanelOnScreen, AFileOfTheNameWithoutTheExtensionIsNotAskedAbout) {
  write("report");
  EXPECT_EQ(pathAfterTyping("report"), path("report.txt"));
}

TEST_F(SavePanelOnScreen, AFileThatIsPickedFromTheListLendsItsNameWithoutTheExtension) {
  run([&](const Shown& shown) {
    shown.name().setText("taken.txt");
    EXPECT_EQ(shown.name().text(), "taken");
    shown.name().setText("twice.txt.txt");
    EXPECT_EQ(shown.name().text(), "twice.txt");
    shown.name().setText("picture.png");
    EXPECT_EQ(shown.name().text(), "picture.png");
  });
}

TEST_F(SavePanelOnScreen, StandsAboveNormalWindowsIfItsLevelSaysSo) {
  const auto panel = textPanel();
  run(*panel, [](const Shown& shown) {
    EXPECT_FALSE(shown.dialog.windowFlags() & Qt::WindowStaysOnTopHint);
  });
  panel->setLevel(PanelLevel::AboveOthers);
  run(*panel, [](const Shown& shown) {
    EXPECT_TRUE(shown.dialog.windowFlags() & Qt::WindowStaysOnTopHint);
  });
}

TEST_F(SavePanelOnScreen, FoldersCanBeMadeIfItIsAllowed) {
  const auto panel = textPanel();
  run(*panel, [](const Shown& shown) {
    EXPECT_TRUE(shown.dialog.findChild<QWidget*>("newFolderButton")->isVisible());
  });
  panel->setCanCreateDirectories(false);
  run(*panel, [](const Shown& shown) {
    EXPECT_FALSE(shown.dialog.findChild<QWidget*>("newFolderButton")->isVisible());
  });
}

TEST_F(SavePanelOnScreen, OtherFilesCannotBeRenamedOrDeleted) {
  run([](const Shown& shown) {
    for (const char* const action : {"qt_rename_action", "qt_delete_action"}) {
      EXPECT_FALSE(shown.dialog.findChild<QAction*>(action)->isVisible()) << action;
    }
  });
}

TEST_F(SavePanelOnScreen, OffersTheUsualPlacesAndLeavesThoseOfOtherProgramsAlone) {
  std::filesystem::create_directory(path("Documents"));
  const auto settings = [] {
    return QSettings(QSettings::UserScope, "QtProject")
        .value("FileDialog/shortcuts")
        .toStringList();
  };
  run([&](const Shown& shown) {
    const auto places = shown.dialog.sidebarUrls();
    EXPECT_TRUE(places.contains(QUrl::fromLocalFile(QString::fromStdString(path("Documents")))));
    EXPECT_TRUE(places.contains(QUrl::fromLocalFile(QDir::homePath())));
  });
  for (const QString& place : settings()) {
    EXPECT_FALSE(place.endsWith("/Documents")) << place.toStdString();
  }
}

TEST_F(SavePanelOnScreen, AMissingFolderGivesWayToTheNearestOneAboveIt) {
  const auto panel = textPanel();
  panel->setDirectoryURL(path("folder/missing/deeper"));
  EXPECT_EQ(run(*panel, [](const Shown& shown) { shown.pressReturn(); }),
            path("folder/untitled.txt"));
}

TEST_F(SavePanelOnScreen, EscapeCancels) {
  EXPECT_EQ(run([](const Shown& shown) { QTest::keyClick(&shown.name(), Qt::Key_Escape); }),
            std::nullopt);
}

TEST_F(SavePanelOnScreen, TerminatingCancelsThePanelAndItsQuestion) {
  const auto chosen = run([this](const Shown& shown) {
    loop.dispatchAsync([this] { loop.terminate(); });
    shown.type("taken");
    shown.pressReturn();
  });
  EXPECT_EQ(chosen, std::nullopt);
  EXPECT_EQ(textPanel()->runModal(), ModalResponse::Cancel) << "nothing more is shown";
}

TEST_F(SavePanelOnScreen, TextsAreTranslated) {
  bundle.translations = {{"Full name: %@", "Vollständiger Name: %@"}, {"Places", "Orte"}};
  run([](const Shown& shown) {
    EXPECT_EQ(shown.hint(), "Vollständiger Name: untitled.txt");
    EXPECT_EQ(shown.dialog.findChild<QWidget*>("sidebar")->accessibleName(), "Orte");
  });
}

TEST_F(SavePanelOnScreen, NoNameIsTakenForMarkup) {
  run([](const Shown& shown) {
    shown.type("<b>bold</b>");
    EXPECT_EQ(shown.dialog.findChild<QLabel*>("hint")->textFormat(), Qt::PlainText);
  });
}

/// A panel with three templates in its accessory.
class SavePanelAccessory : public SavePanelOnScreen {
 protected:
  SavePanelAccessory() {
    button.setLabel("&Template:");
    for (const auto& [title, suffix] :
         {std::pair("Text File", "txt"), {"Script & more", "sh"}, {"Folder", ""}}) {
      button.addItem(
          {.title = title, .image = {.fileType = suffix, .size = 16}, .representedObject = title});
    }
    panel->setAccessoryView(button);
  }

  PopUpButton button;
  std::unique_ptr<SavePanel> panel = textPanel();
};

TEST_F(SavePanelAccessory, ListsTitlesWithIconsOf16By16Points) {
  button.selectItemAtIndex(1);
  run(*panel, [](const Shown& shown) {
    const QComboBox& chooser = shown.accessory();
    ASSERT_EQ(chooser.count(), 3);
    EXPECT_EQ(chooser.itemText(1), "Script & more");
    EXPECT_EQ(chooser.currentIndex(), 1);
    EXPECT_EQ(chooser.iconSize(), QSize(16, 16));
    for (int index = 0; index < 3; ++index) {
      EXPECT_FALSE(chooser.itemIcon(index).isNull()) << index;
    }
  });
}

TEST_F(SavePanelAccessory, StandsUnderTheNameField) {
  run(*panel, [](const Shown& shown) {
    EXPECT_GT(shown.accessory().y(), shown.name().y());
    EXPECT_EQ(shown.accessory().x(), shown.name().x());
    EXPECT_FALSE(shown.dialog.findChild<QWidget*>("fileTypeCombo")->isVisible());
  });
}

TEST_F(SavePanelAccessory, ChoosingChangesTitleNameAndTypeAtOnce) {
  button.setAction([this] {
    panel->setTitle("New Script");
    panel->setNameFieldStringValue("script");
    panel->setAllowedFileTypes(std::vector<std::string>{"sh"});
    panel->setExtensionHidden(true);
  });
  const auto chosen = run(*panel, [this](const Shown& shown) {
    shown.type("typed");
    QTest::keyClick(&shown.accessory(), Qt::Key_Down);
    EXPECT_EQ(button.indexOfSelectedItem(), 1u);
    EXPECT_EQ(shown.dialog.windowTitle(), "New Script");
    EXPECT_EQ(shown.name().text(), "script");
    EXPECT_EQ(shown.name().selectedText(), "script");
    EXPECT_EQ(shown.hint(), "Full name: script.sh");
    shown.pressReturn();
  });
  EXPECT_EQ(chosen, path("script.sh"));
}

TEST_F(SavePanelAccessory, ChangingToNoTypeShowsTheNameAsItIs) {
  button.setAction([this] {
    panel->setNameFieldStringValue("project");
    panel->setAllowedFileTypes(std::nullopt);
    panel->setExtensionHidden(false);
  });
  const auto chosen = run(*panel, [](const Shown& shown) {
    QTest::keyClick(&shown.accessory(), Qt::Key_End);
    EXPECT_EQ(shown.name().text(), "project");
    EXPECT_EQ(shown.hint(), "Full name: project");
    shown.pressReturn();
  });
  EXPECT_EQ(chosen, path("project"));
}

TEST_F(SavePanelAccessory, ChoosingTheSameLineAgainCounts) {
  int chosen = 0;
  button.setAction([&] { ++chosen; });
  run(*panel, [](const Shown& shown) {
    shown.accessory().showPopup();
    QTest::keyClick(shown.accessory().view(), Qt::Key_Return);
  });
  EXPECT_EQ(chosen, 1);
}

TEST_F(SavePanelAccessory, WithNothingToChooseItIsDisabled) {
  button.removeAllItems();
  const auto chosen = run(*panel, [](const Shown& shown) {
    EXPECT_FALSE(shown.accessory().isEnabled());
    shown.pressReturn();
  });
  EXPECT_EQ(chosen, path("untitled.txt"));
}

TEST_F(SavePanelAccessory, ManyAndLongTitlesFitThePanel) {
  button.removeAllItems();
  for (int index = 0; index < 200; ++index) {
    button.addItem({.title = std::string(300, 'W'),
                    .image = {.fileType = "t" + std::to_string(index), .size = 16},
                    .representedObject = index});
  }
  run(*panel, [](const Shown& shown) { EXPECT_LT(shown.dialog.width(), 1000); });
}

TEST_F(SavePanelAccessory, TabLeadsFromTheNameToTheTemplate) {
  run(*panel, [](const Shown& shown) {
    QTest::keyClick(&shown.name(), Qt::Key_Tab);
    EXPECT_EQ(shown.dialog.focusWidget(), &shown.accessory());
  });
}

TEST_F(SavePanelAccessory, EveryControlHasAnAccessibleNameAndThoseBelowTheListAMnemonic) {
  run(*panel, [](const Shown& shown) {
    for (QWidget* const control : shown.dialog.findChildren<QWidget*>()) {
      if (control->isVisible() && (control->focusPolicy() & Qt::TabFocus)) {
        QAccessibleInterface* const accessible = QAccessible::queryAccessibleInterface(control);
        ASSERT_NE(accessible, nullptr);
        EXPECT_NE(accessible->text(QAccessible::Name), "")
            << control->metaObject()->className() << control->objectName().toStdString();
      }
    }
    for (const QWidget* const control :
         {static_cast<QWidget*>(&shown.name()), static_cast<QWidget*>(&shown.accessory())}) {
      const auto labels = shown.dialog.findChildren<QLabel*>();
      EXPECT_TRUE(std::any_of(labels.begin(), labels.end(), [&](const QLabel* label) {
        return label->buddy() == control && label->text().contains('&');
      }));
    }
  });
}

TEST_F(SavePanelAccessory, FromRightToLeftTheLabelsStandOnTheRight) {
  run(*panel, [](const Shown& shown) {
    QApplication::setLayoutDirection(Qt::RightToLeft);
    QApplication::processEvents();
    EXPECT_LT(shown.save().x(), shown.name().x());
    EXPECT_EQ(shown.accessory().geometry().right(), shown.name().geometry().right());
    QApplication::setLayoutDirection(Qt::LeftToRight);
  });
}

}  // namespace
}  // namespace quennel::test
