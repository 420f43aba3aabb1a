#include <gtest/gtest.h>
#include <unistd.h>

#include <QtCore/QFile>
#include <QtCore/QLibraryInfo>
#include <QtGui/QAccessible>
#include <QtGui/QScreen>
#include <QtWidgets/QApplication>
#include <QtWidgets/QLabel>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPushButton>
#include <chrono>
#include <csignal>
#include <functional>
#include <string>
#include <vector>

#include "platform/linux/events/EventRunLoop.h"
#include "platform/linux/ui/LazyUserInterface.h"
#include "tests/support/FakeBundle.h"
#include "tests/support/FreshSession.h"

namespace quennel::test {
namespace {

using std::chrono::milliseconds;

QMessageBox* shownAlert() { return qobject_cast<QMessageBox*>(QApplication::activeModalWidget()); }

class AlertPanel : public testing::Test {
 protected:
  /// Shows the alert and, once it is up, has a look at it; closes it if `look` has not.
  int show(const Alert& alert, const std::function<void(QMessageBox&)>& look) {
    loop.dispatchAsync([this, look] {
      QMessageBox* const box = shownAlert();
      ASSERT_NE(box, nullptr);
      look(*box);
      box->reject();
    });
    return userInterface.runModal(alert);
  }

  FreshSession session;
  EnvironmentVariable platform{"QT_QPA_PLATFORM", "offscreen"};
  // The platform says at every window what it cannot do.
  EnvironmentVariable logging{"QT_LOGGING_RULES", "default.warning=false"};
  EventRunLoop loop;
  FakeBundle bundle;
  LazyUserInterface userInterface{loop, bundle, USER_INTERFACE_MODULE};
};

TEST_F(AlertPanel, ShowsTitleMessageAndStyle) {
  show({"Title!", "message", AlertStyle::Critical, {}}, [](QMessageBox& box) {
    EXPECT_EQ(box.text(), "Title!");
    EXPECT_EQ(box.informativeText(), "message");
    EXPECT_EQ(box.icon(), QMessageBox::Critical);
    EXPECT_EQ(box.windowTitle(), "Quennel");
  });
  show({"Title!", "message", AlertStyle::Informational, {}},
       [](QMessageBox& box) { EXPECT_EQ(box.icon(), QMessageBox::Information); });
}

TEST_F(AlertPanel, TextsThatAreAbsentAreEmpty) {
  show({}, [](QMessageBox& box) {
    EXPECT_EQ(box.text(), "");
    EXPECT_EQ(box.informativeText(), "");
    EXPECT_EQ(box.buttons().size(), 1);
  });
}

TEST_F(AlertPanel, NoTextIsTakenForMarkup) {
  const std::string markup = "<b>bold</b> &amp; <img src='x'>";
  show({markup, markup, AlertStyle::Critical, {}}, [&](QMessageBox& box) {
    for (const char* const name : {"qt_msgbox_label", "qt_msgbox_informativelabel"}) {
      const auto* const label = box.findChild<QLabel*>(name);
      ASSERT_NE(label, nullptr) << name;
      EXPECT_EQ(label->text().toStdString(), markup);
      EXPECT_EQ(label->textFormat(), Qt::PlainText) << name;
    }
  });
}

TEST_F(AlertPanel, TextsCanBeSelected) {
  show({"Title!", "message", AlertStyle::Critical, {}}, [](QMessageBox& box) {
    for (const char* const name : {"qt_msgbox_label", "qt_msgbox_informativelabel"}) {
      EXPECT_TRUE(box.findChild<QLabel*>(name)->textInteractionFlags() & Qt::TextSelectableByMouse)
          << name;
    }
  });
}

TEST_F(AlertPanel, WithoutButtonsThereIsASingleDefaultOne) {
  show({"Title!", {}, AlertStyle::Critical, {}}, [](QMessageBox& box) {
    ASSERT_EQ(box.buttons().size(), 1);
    EXPECT_EQ(box.standardButton(box.buttons().first()), QMessageBox::Ok);
    EXPECT_TRUE(qobject_cast<QPushButton*>(box.buttons().first())->isDefault());
  });
}

TEST_F(AlertPanel, EachButtonHasItsAnswer) {
  const std::vector<std::string> titles = {"First", "Save & go", "Last"};
  for (std::size_t index = 0; index < titles.size(); ++index) {
    const int answer = show({"Title!", {}, AlertStyle::Critical, titles}, [&](QMessageBox& box) {
      const QString shown = QString::fromStdString(titles[index]).replace('&', "&&");
      for (QAbstractButton* const button : box.buttons()) {
        if (button->text() == shown) {
          button->click();
        }
      }
    });
    EXPECT_EQ(answer, UserInterface::alertFirstButtonReturn + static_cast<int>(index));
  }
}

TEST_F(AlertPanel, TheFirstButtonIsTheDefault) {
  show({"Title!", {}, AlertStyle::Critical, {"First", "Last"}}, [](QMessageBox& box) {
    EXPECT_EQ(box.defaultButton()->text(), "First");
    EXPECT_EQ(box.escapeButton()->text(), "Last");
  });
}

TEST_F(AlertPanel, AssistiveTechnologyIsToldTheTexts) {
  show({"Title!", "message", AlertStyle::Critical, {"First"}}, [](QMessageBox& box) {
    QAccessibleInterface* const accessible = QAccessible::queryAccessibleInterface(&box);
    ASSERT_NE(accessible, nullptr);
    EXPECT_EQ(accessible->text(QAccessible::Name), "Title!");
    EXPECT_EQ(accessible->text(QAccessible::Description), "message");
    QAccessibleInterface* const button =
        QAccessible::queryAccessibleInterface(box.buttons().first());
    EXPECT_EQ(button->text(QAccessible::Name), "First");
    EXPECT_EQ(button->role(), QAccessible::Button);
  });
}

TEST_F(AlertPanel, EndlessTextsStayOnTheScreen) {
  std::string lines;
  for (int line = 0; line < 1000; ++line) {
    lines += "line\n";
  }
  for (const std::string& text :
       {lines, std::string(1'000'000, 'x'), "/" + std::string(255, 'W')}) {
    show({text, text, AlertStyle::Critical, {}}, [](QMessageBox& box) {
      const QSize screen = box.screen()->availableSize();
      EXPECT_LE(box.width(), screen.width());
      EXPECT_LE(box.height(), screen.height());
    });
  }
}

TEST_F(AlertPanel, ALongFileNameShowsItsStartAndItsEnd) {
  const std::string name = "start" + std::string(240, '-') + "end.txt";
  show({"Title!", "No such file: /home/me/" + name, AlertStyle::Critical, {}},
       [](QMessageBox& box) {
         EXPECT_TRUE(box.informativeText().startsWith("No such file: /home/me/start"));
         EXPECT_TRUE(box.informativeText().endsWith("end.txt"));
         EXPECT_LT(box.informativeText().size(), 120);
       });
}

TEST_F(AlertPanel, BytesThatAreNoTextAreShownAsReplacements) {
  show({"Title!", "caf\xe9.txt", AlertStyle::Critical, {}},
       [](QMessageBox& box) { EXPECT_EQ(box.informativeText(), u"caf\ufffd.txt"); });
}

TEST_F(AlertPanel, TheOuterOfTwoAlertsMayBeClosedFirst) {
  std::vector<std::string> log;
  loop.dispatchAsync([&] {
    QMessageBox* const outer = shownAlert();
    loop.dispatchAsync([&, outer] {
      outer->reject();
      EXPECT_NE(shownAlert(), outer);
      shownAlert()->reject();
    });
    log.push_back("inner " + std::to_string(userInterface.runModal({"Inner!", {}, {}, {"A"}})));
  });
  log.push_back("outer " + std::to_string(userInterface.runModal({"Outer!", {}, {}, {"B", "C"}})));
  EXPECT_EQ(log, (std::vector<std::string>{"inner 1000", "outer 1001"}));
}

TEST_F(AlertPanel, TheApplicationObjectGoesAfterTheLastAlert) {
  EXPECT_EQ(QCoreApplication::instance(), nullptr);
  show({"Title!", {}, {}, {}}, [&](QMessageBox&) {
    show({"Within!", {}, {}, {}}, [](QMessageBox&) {});
    EXPECT_NE(QCoreApplication::instance(), nullptr) << "the outer alert is still up";
  });
  EXPECT_EQ(QCoreApplication::instance(), nullptr);
}

/// How the end of the program is asked for while that many alerts, panels and open panels that
/// nobody waits for are stacked.
struct EndOfStack {
  int depth;
  enum { ByWork, BySignal } request;
};

class StackedPanels : public AlertPanel, public testing::WithParamInterface<EndOfStack> {
 protected:
  void showOneMore(int left) {
    loop.dispatchAsync([this, left] { left > 1 ? showOneMore(left - 1) : askForTheEnd(); });
    const OpenPanel panel{.title = "Panel", .message = {}, .prompt = {}, .directory = "/"};
    if (left % 3 == 0) {
      userInterface.beginOpenPanel(panel, [](const auto&) { FAIL() << "nothing was chosen"; });
    }
    if (left % 2 == 0) {
      userInterface.runModalOpenPanel(panel);
    } else {
      userInterface.runModal({"Title!", {}, {}, {}});
    }
    ++closedCount;
  }

  void askForTheEnd() {
    if (GetParam().request == EndOfStack::ByWork) {
      loop.terminate();
    } else {
      // Everything waits when it arrives.
      loop.dispatchAfter(milliseconds(50), [] { ASSERT_EQ(kill(getpid(), SIGTERM), 0); });
    }
  }

  int closedCount = 0;
};

TEST_P(StackedPanels, AllCloseWhenTheProgramIsToEnd) {
  loop.dispatchAsync([this] { showOneMore(GetParam().depth); });
  loop.run();
  EXPECT_EQ(closedCount, GetParam().depth);
  EXPECT_EQ(QCoreApplication::instance(), nullptr);
}

INSTANTIATE_TEST_SUITE_P(
    Depths, StackedPanels,
    testing::Values(EndOfStack{1, EndOfStack::ByWork}, EndOfStack{2, EndOfStack::ByWork},
                    EndOfStack{3, EndOfStack::ByWork}, EndOfStack{4, EndOfStack::ByWork},
                    EndOfStack{9, EndOfStack::ByWork}, EndOfStack{1, EndOfStack::BySignal},
                    EndOfStack{2, EndOfStack::BySignal}, EndOfStack{3, EndOfStack::BySignal},
                    EndOfStack{4, EndOfStack::BySignal}, EndOfStack{9, EndOfStack::BySignal}),
    [](const auto& instance) {
      const bool bySignal = instance.param.request == EndOfStack::BySignal;
      return std::to_string(instance.param.depth) + (bySignal ? "BySignal" : "ByWork");
    });

TEST_F(AlertPanel, ActivatingBringsTheAlertToTheFront) {
  show({"Title!", {}, {}, {}}, [&](QMessageBox& box) {
    QWidget other;
    other.show();
    other.activateWindow();
    QApplication::processEvents();
    ASSERT_FALSE(box.isActiveWindow());
    userInterface.activateIgnoringOtherApps();
    QApplication::processEvents();
    EXPECT_TRUE(box.isActiveWindow());
  });
}

TEST_F(AlertPanel, TheDefaultButtonSpeaksTheLanguageOfTheUser) {
  if (!QFile::exists(QLibraryInfo::path(QLibraryInfo::TranslationsPath) + "/qtbase_es.qm")) {
    GTEST_SKIP() << "no translations of the toolkit: package qt6-translations-l10n";
  }
  const EnvironmentVariable language("LC_ALL", "es_ES.UTF-8");
  show({"Title!", {}, AlertStyle::Critical, {}},
       [](QMessageBox& box) { EXPECT_EQ(box.buttons().first()->text(), "Aceptar"); });
}

}  // namespace
}  // namespace quennel::test
