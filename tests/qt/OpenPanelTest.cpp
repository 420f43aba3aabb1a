#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QtCore/QFile>
#include <QtGui/QAccessible>
#include <QtWidgets/QApplication>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QListView>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPushButton>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/events/EventRunLoop.h"
#include "platform/linux/ui/LazyUserInterface.h"
#include "tests/support/FakeBundle.h"
#include "tests/support/FreshSession.h"

namespace quennel::test {
namespace {

using std::chrono::milliseconds;
using Choices = std::vector<std::optional<std::string>>;

QFileDialog* shownPanel() {
  for (QWidget* const window : QApplication::topLevelWidgets()) {
    auto* const panel = qobject_cast<QFileDialog*>(window);
    if (panel && panel->isVisible()) {
      return panel;
    }
  }
  return nullptr;
}

QPushButton* buttonOf(const QFileDialog& panel, const QString& title) {
  for (auto* const button : panel.findChildren<QPushButton*>()) {
    if (button->text() == title) {
      return button;
    }
  }
  return nullptr;
}

void type(const QFileDialog& panel, const std::string& path) {
  panel.findChild<QLineEdit*>("fileNameEdit")->setText(QFile::decodeName(path.c_str()));
}

class OpenPanelOnScreen : public testing::Test {
 protected:
  OpenPanelOnScreen() {
    std::filesystem::create_directories(folder("Work/App"));
    std::filesystem::create_directory(folder(".hidden"));
    QFile file(QString::fromStdString(folder("file.txt")));
    file.open(QFile::WriteOnly);
  }

  std::string folder(const std::string& name) const { return session.home() / name; }

  OpenPanel panel(const std::string& directory) const {
    return {.title = "Quennel",
            .message = "Quennel would like to access your working directory.",
            .prompt = "Save & Authorize",
            .directory = directory,
            .canChooseFiles = false,
            .canChooseDirectories = true,
            .level = PanelLevel::AboveOthers};
  }

  /// Runs the panel and, once it is up, has a look at it; dismisses it if `look` has not.
  std::optional<std::string> run(const OpenPanel& shown,
                                 const std::function<void(QFileDialog&)>& look) {
    loop.dispatchAsync([look] {
      QFileDialog* const dialog = shownPanel();
      ASSERT_NE(dialog, nullptr);
      look(*dialog);
      if (dialog->isVisible()) {
        dialog->reject();
      }
    });
    return userInterface.runModalOpenPanel(shown);
  }

  std::optional<std::string> choiceAfterTyping(const std::string& path) {
    return run(panel(session.home().path()), [&](QFileDialog& dialog) {
      type(dialog, path);
      buttonOf(dialog, "Save && Authorize")->click();
    });
  }

  /// Begins the panel; its answer comes to `choices`, and the run ends with the last of them.
  void begin(const OpenPanel& shown, std::size_t last = 1) {
    userInterface.beginOpenPanel(shown, [this, last](const auto& choice) {
      choices.push_back(choice);
      if (choices.size() == last) {
        loop.terminate();
      }
    });
  }

  FreshSession session;
  EnvironmentVariable platform{"QT_QPA_PLATFORM", "offscreen"};
  // The platform says at every window what it cannot do.
  EnvironmentVariable logging{"QT_LOGGING_RULES", "default.warning=false"};
  EventRunLoop loop;
  FakeBundle bundle;
  LazyUserInterface userInterface{loop, bundle, USER_INTERFACE_MODULE};
  Choices choices;
};

TEST_F(OpenPanelOnScreen, ShowsTitleMessageAndPrompt) {
  run(panel(folder("Work")), [](QFileDialog& dialog) {
    EXPECT_EQ(dialog.windowTitle(), "Quennel");
    EXPECT_NE(buttonOf(dialog, "Save && Authorize"), nullptr);
    auto* const message = dialog.findChild<QLabel*>("message");
    ASSERT_NE(message, nullptr);
    EXPECT_TRUE(message->isVisible());
    EXPECT_EQ(message->text(), "Quennel would like to access your working directory.");
    EXPECT_EQ(message->textFormat(), Qt::PlainText);
  });
}

TEST_F(OpenPanelOnScreen, NothingElseCanBeUsedWhileItIsWaitedFor) {
  run(panel(folder("Work")),
      [](QFileDialog& dialog) { EXPECT_EQ(QApplication::activeModalWidget(), &dialog); });
}

TEST_F(OpenPanelOnScreen, StandsAboveNormalWindowsIfItsLevelSaysSo) {
  OpenPanel shown = panel(folder("Work"));
  run(shown,
      [](QFileDialog& dialog) { EXPECT_TRUE(dialog.windowFlags() & Qt::WindowStaysOnTopHint); });
  shown.level = PanelLevel::Normal;
  run(shown,
      [](QFileDialog& dialog) { EXPECT_FALSE(dialog.windowFlags() & Qt::WindowStaysOnTopHint); });
}

TEST_F(OpenPanelOnScreen, TheButtonChoosesTheStartFolderAtOnce) {
  EXPECT_EQ(run(panel(folder("Work")),
                [](QFileDialog& dialog) { buttonOf(dialog, "Save && Authorize")->click(); }),
            folder("Work"));
}

TEST_F(OpenPanelOnScreen, AFolderThatIsTypedIsChosen) {
  EXPECT_EQ(choiceAfterTyping(folder("Work/App")), folder("Work/App"));
  EXPECT_EQ(choiceAfterTyping("Work"), folder("Work"));
  EXPECT_EQ(choiceAfterTyping("/"), "/");
  EXPECT_EQ(choiceAfterTyping(folder("Work/App/..//")), folder("Work"));
}

TEST_F(OpenPanelOnScreen, NeitherAFileNorAFolderThatIsMissingIsChosen) {
  for (const char* const name : {"file.txt", "missing"}) {
    loop.dispatchAfter(milliseconds(100), [] {
      if (auto* const note = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
        note->reject();
      }
    });
    EXPECT_EQ(choiceAfterTyping(folder(name)), std::nullopt) << name;
  }
}

TEST_F(OpenPanelOnScreen, DismissingItChoosesNothing) {
  EXPECT_EQ(run(panel(folder("Work")), [](QFileDialog& dialog) { dialog.close(); }), std::nullopt);
}

TEST_F(OpenPanelOnScreen, AStartFolderThatIsMissingGivesTheNearestAboveIt) {
  for (const char* const start : {"Work/missing/deeper", "Work/caf\xe9"}) {
    run(panel(folder(start)), [&](QFileDialog& dialog) {
      EXPECT_EQ(dialog.directory().absolutePath().toStdString(), folder("Work")) << start;
    });
  }
  run(panel("file.txt"), [](QFileDialog& dialog) { EXPECT_TRUE(dialog.directory().exists()); });
}

TEST_F(OpenPanelOnScreen, HiddenFoldersAreShownWhenAskedFor) {
  OpenPanel shown = panel(session.home().path());
  run(shown, [](QFileDialog& dialog) { EXPECT_FALSE(dialog.filter() & QDir::Hidden); });
  shown.showsHiddenFiles = true;
  run(shown, [](QFileDialog& dialog) { EXPECT_TRUE(dialog.filter() & QDir::Hidden); });
}

TEST_F(OpenPanelOnScreen, NothingCanBeChangedInIt) {
  run(panel(folder("Work")), [](QFileDialog& dialog) {
    EXPECT_TRUE(dialog.testOption(QFileDialog::ReadOnly));
    EXPECT_FALSE(dialog.findChild<QWidget*>("newFolderButton")->isVisible());
  });
}

TEST_F(OpenPanelOnScreen, AFileIsChosenWhereFilesMayBe) {
  OpenPanel shown = panel(session.home().path());
  shown.canChooseFiles = true;
  shown.canChooseDirectories = false;
  EXPECT_EQ(run(shown,
                [](QFileDialog& dialog) {
                  type(dialog, "file.txt");
                  buttonOf(dialog, "Save && Authorize")->click();
                }),
            folder("file.txt"));
}

TEST_F(OpenPanelOnScreen, AssistiveTechnologyIsToldWhatEverythingIs) {
  run(panel(folder("Work")), [](QFileDialog& dialog) {
    QAccessibleInterface* const accessible = QAccessible::queryAccessibleInterface(&dialog);
    EXPECT_EQ(accessible->text(QAccessible::Name), "Quennel");
    EXPECT_EQ(accessible->text(QAccessible::Description),
              "Quennel would like to access your working directory.");
    for (QWidget* const widget : dialog.findChildren<QWidget*>()) {
      if (widget->isVisible() && (widget->focusPolicy() & Qt::TabFocus)) {
        QAccessibleInterface* const control = QAccessible::queryAccessibleInterface(widget);
        EXPECT_NE(control->text(QAccessible::Name), "")
            << widget->metaObject()->className() << " " << widget->objectName().toStdString();
      }
    }
  });
}

TEST_F(OpenPanelOnScreen, APanelThatIsBegunAnswersOnTheMainQueue) {
  bool returned = false;
  loop.dispatchAsync([&] {
    begin(panel(folder("Work")));
    returned = true;
    EXPECT_NE(shownPanel(), nullptr);
    loop.dispatchAfter(milliseconds(20), [&] {
      EXPECT_TRUE(returned);
      buttonOf(*shownPanel(), "Save && Authorize")->click();
      EXPECT_TRUE(choices.empty()) << "the answer is queued";
    });
  });
  loop.run();
  EXPECT_EQ(choices, Choices{folder("Work")});
  EXPECT_EQ(QCoreApplication::instance(), nullptr) << "the toolkit goes with the last panel";
}

TEST_F(OpenPanelOnScreen, PanelsSideBySideAnswerInAnyOrder) {
  loop.dispatchAsync([&] {
    begin(panel(folder("Work")), 2);
    QFileDialog* const first = shownPanel();
    begin(panel(folder("Work/App")), 2);
    loop.dispatchAfter(milliseconds(20), [this, first] {
      buttonOf(*first, "Save && Authorize")->click();
      loop.dispatchAfter(milliseconds(20), [] { shownPanel()->reject(); });
    });
  });
  loop.run();
  EXPECT_EQ(choices, (Choices{folder("Work"), std::nullopt}));
}

TEST_F(OpenPanelOnScreen, APanelBegunDuringAnAlertOutlivesTheAlert) {
  loop.dispatchAsync([&] {
    loop.dispatchAfter(milliseconds(20), [&] {
      begin(panel(folder("Work")));
      qobject_cast<QMessageBox*>(QApplication::activeModalWidget())->reject();
    });
    userInterface.runModal({"Title!", {}, {}, {}});
    EXPECT_TRUE(choices.empty());
    loop.dispatchAfter(milliseconds(20),
                       [] { buttonOf(*shownPanel(), "Save && Authorize")->click(); });
  });
  loop.run();
  EXPECT_EQ(choices, Choices{folder("Work")});
}

TEST_F(OpenPanelOnScreen, AnAlertMayBeShownWhileAPanelStandsThere) {
  loop.dispatchAsync([&] {
    begin(panel(folder("Work")));
    loop.dispatchAfter(milliseconds(20), [&] {
      loop.dispatchAfter(milliseconds(20), [] {
        qobject_cast<QMessageBox*>(QApplication::activeModalWidget())->reject();
      });
      userInterface.runModal({"Title!", {}, {}, {}});
      buttonOf(*shownPanel(), "Save && Authorize")->click();
    });
  });
  loop.run();
  EXPECT_EQ(choices, Choices{folder("Work")});
}

TEST_F(OpenPanelOnScreen, TerminatingClosesThePanelAndItDoesNotAnswer) {
  loop.dispatchAsync([&] {
    begin(panel(folder("Work")));
    loop.dispatchAfter(milliseconds(20), [&] { loop.terminate(); });
  });
  loop.run();
  EXPECT_TRUE(choices.empty());
  EXPECT_EQ(shownPanel(), nullptr);
  begin(panel(folder("Work")));
  EXPECT_EQ(userInterface.runModalOpenPanel(panel(folder("Work"))), std::nullopt);
  EXPECT_EQ(shownPanel(), nullptr) << "nothing is shown any more";
}

TEST_F(OpenPanelOnScreen, TerminatingDoesNotDestroyThePanelInsideItsOwnSignal) {
  bool isThereAfterItsSignal = false;
  loop.dispatchAsync([&] {
    begin(panel(folder("Work")));
    QFileDialog* const dialog = shownPanel();
    // Connected last, so called last: never, if the dialog has been destroyed by then.
    QObject::connect(dialog, &QDialog::finished, dialog, [&] { isThereAfterItsSignal = true; });
    loop.dispatchAfter(milliseconds(20), [&] { loop.terminate(); });
  });
  loop.run();
  EXPECT_TRUE(isThereAfterItsSignal);
  EXPECT_EQ(QCoreApplication::instance(), nullptr) << "it goes all the same";
}

TEST_F(OpenPanelOnScreen, TerminatingDuringAnAlertDoesNotDestroyThePanelInsideItsOwnSignal) {
  bool isThereAfterItsSignal = false;
  loop.dispatchAsync([&] {
    loop.dispatchAfter(milliseconds(20), [&] {
      begin(panel(folder("Work")));
      QFileDialog* const dialog = shownPanel();
      QObject::connect(dialog, &QDialog::finished, dialog, [&] { isThereAfterItsSignal = true; });
      loop.terminate();
    });
    userInterface.runModal({"Title!", {}, {}, {}});
    EXPECT_EQ(QCoreApplication::instance(), nullptr) << "it goes all the same";
  });
  loop.run();
  EXPECT_TRUE(isThereAfterItsSignal);
}

TEST_F(OpenPanelOnScreen, TheTokenOfTheRequestIsOfferedOnceAndNotInherited) {
  userInterface.setActivationToken("token");
  run(panel(folder("Work")),
      [](QFileDialog&) { EXPECT_EQ(qgetenv("XDG_ACTIVATION_TOKEN"), "token"); });
  EXPECT_FALSE(qEnvironmentVariableIsSet("XDG_ACTIVATION_TOKEN"));
  run(panel(folder("Work")),
      [](QFileDialog&) { EXPECT_FALSE(qEnvironmentVariableIsSet("XDG_ACTIVATION_TOKEN")); });
}

}  // namespace
}  // namespace quennel::test
