#include <gtest/gtest.h>

#include <QtCore/QMimeData>
#include <QtGui/QClipboard>
#include <QtGui/QDrag>
#include <QtGui/QDropEvent>
#include <QtGui/QImage>
#include <QtGui/QMouseEvent>
#include <QtTest/QTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QDialog>
#include <QtWidgets/QLabel>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QPushButton>
#include <functional>
#include <memory>
#include <string>

#include "installui/InstallScriptWindowController.h"
#include "platform/Windowing.h"
#include "platform/linux/events/EventRunLoop.h"
#include "platform/linux/ui/LazyUserInterface.h"
#include "tests/support/FakeDesktop.h"
#include "tests/support/FreshSession.h"

namespace quennel::test {
namespace {

/// The controller with the window of the toolkit.
class InstallWindow : public testing::Test {
 protected:
  InstallWindow() {
    controller->setScriptPath("/A/B/QuennelHelper.sh");
    controller->setDestDir("/U/net.brellow.QuennelHelper");
  }

  /// Shows the window and, once it is up, has a look at it; closes it if `look` has not.
  void show(const std::function<void(QDialog&)>& look) {
    loop.dispatchAsync([this, look] {
      auto* const dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
      ASSERT_NE(dialog, nullptr);
      look(*dialog);
      controller->window()->close();
    });
    ASSERT_NE(controller->window(), nullptr);
    userInterface.windowing()->runModalForWindow(*controller->window());
  }

  static QPushButton& button(const QDialog& dialog, const char* text) {
    for (auto* const found : dialog.findChildren<QPushButton*>()) {
      if (found->text() == text) {
        return *found;
      }
    }
    throw std::runtime_error("there is no such button");
  }
  static QLabel& label(const QDialog& dialog, const char* name) {
    return *dialog.findChild<QLabel*>(name);
  }
  static QPlainTextEdit* command() {
    QWidget* const popup = QApplication::activePopupWidget();
    return popup ? popup->findChild<QPlainTextEdit*>() : nullptr;
  }

  FreshSession session;
  EnvironmentVariable platform{"QT_QPA_PLATFORM", "offscreen"};
  EnvironmentVariable logging{"QT_LOGGING_RULES", "default.warning=false"};
  EventRunLoop loop;
  FakeDesktop fakes;
  LazyUserInterface userInterface{loop, fakes.mainBundle, USER_INTERFACE_MODULE};
  std::shared_ptr<InstallScriptWindowController> controller =
      std::make_shared<InstallScriptWindowController>(
          InstallScriptWindowController::Services{.runLoop = loop,
                                                  .fileManager = fakes.fileManager,
                                                  .securityScope = fakes.securityScope,
                                                  .workspace = fakes.workspace,
                                                  .userInterface = userInterface,
                                                  .bundle = fakes.mainBundle});
};

TEST_F(InstallWindow, ShowsTheScriptAndItsFolder) {
  show([](QDialog& dialog) {
    EXPECT_EQ(label(dialog, "filenameTextField").text(), "QuennelHelper.sh");
    EXPECT_EQ(label(dialog, "filenameTextField").toolTip(), "/A/B/QuennelHelper.sh");
    EXPECT_EQ(label(dialog, "messageTextField").text(),
              "Please drag and drop the above script into the \"net.brellow.QuennelHelper\" dir.");
    EXPECT_EQ(label(dialog, "imageView").toolTip(), "/A/B/QuennelHelper.sh");
  });
}

TEST_F(InstallWindow, ShowsTheIconLarge) {
  show([](QDialog& dialog) {
    const QLabel& icon = label(dialog, "imageView");
    EXPECT_EQ(icon.pixmap().deviceIndependentSize(), QSizeF(128, 128));
    EXPECT_EQ(icon.size(), QSize(128, 128));
  });
}

TEST_F(InstallWindow, NoTextIsTakenForMarkup) {
  controller->setScriptPath("/A/<b>bold</b>");
  show([](QDialog& dialog) {
    EXPECT_EQ(label(dialog, "filenameTextField").textFormat(), Qt::PlainText);
    EXPECT_EQ(label(dialog, "imageView").toolTip(), "/A/&lt;b&gt;bold&lt;/b&gt;");
  });
}

TEST_F(InstallWindow, SpeaksTheLanguageOfTheUser) {
  fakes.mainBundle.translations = {{"Copy Path", "Pfad & mehr"},
                                   {"Install QuennelHelper.sh", "Installation"}};
  show([](QDialog& dialog) {
    EXPECT_NO_THROW(button(dialog, "Pfad && mehr"));
    EXPECT_EQ(dialog.windowTitle(), "Installation");
  });
}

TEST_F(InstallWindow, ClosesByEscapeOrByItsButton) {
  int ended = 0;
  show([&](QDialog& dialog) {
    QObject::connect(&dialog, &QDialog::finished, &dialog, [&] { ++ended; });
    dialog.close();
    EXPECT_FALSE(dialog.isVisible());
  });
  EXPECT_EQ(ended, 1);
}

TEST_F(InstallWindow, GoesWhenTheHelperTerminates) {
  show([this](QDialog&) {
    loop.dispatchAsync([] { FAIL() << "this comes too late"; });
    loop.terminate();
  });
  userInterface.windowing()->runModalForWindow(*controller->window());
}

TEST_F(InstallWindow, CopiesThePathToTheClipboard) {
  show([](QDialog& dialog) {
    button(dialog, "Copy Path").click();
    EXPECT_EQ(QApplication::clipboard()->text(), "/A/B/QuennelHelper.sh");
  });
}

TEST_F(InstallWindow, OpensTheDestination) {
  show([this](QDialog& dialog) {
    button(dialog, "Open Destination").click();
    EXPECT_EQ(fakes.workspace.opened, std::vector<std::string>{"/U/net.brellow.QuennelHelper"});
  });
}

TEST_F(InstallWindow, HelpShowsTheCommandInAFixedPitchFont) {
  show([](QDialog& dialog) {
    button(dialog, "Help").click();
    ASSERT_NE(command(), nullptr);
    EXPECT_EQ(command()->toPlainText(),
              "cp '/A/B/QuennelHelper.sh' '/U/net.brellow.QuennelHelper/'");
    EXPECT_TRUE(QFontInfo(command()->font()).fixedPitch());
    EXPECT_EQ(command()->font().pointSizeF(), 12);
    EXPECT_TRUE(command()->isReadOnly());
    QApplication::activePopupWidget()->close();
  });
}

TEST_F(InstallWindow, TheCommandIsSelectedReadyToBeCopied) {
  show([](QDialog& dialog) {
    button(dialog, "Help").click();
    command()->copy();
    EXPECT_EQ(QApplication::clipboard()->text(), command()->toPlainText());
    QApplication::activePopupWidget()->close();
  });
}

TEST_F(InstallWindow, TheCommandStandsBelowTheButton) {
  show([](QDialog& dialog) {
    dialog.move(300, 100);
    QPushButton& help = button(dialog, "Help");
    help.click();
    const QRect anchor(help.mapToGlobal(QPoint()), help.size());
    const QRect popover = QApplication::activePopupWidget()->frameGeometry();
    EXPECT_GT(popover.top(), anchor.bottom());
    EXPECT_LT(popover.top(), anchor.bottom() + 10);
    EXPECT_LE(popover.left(), anchor.center().x());
    EXPECT_GE(popover.right(), anchor.center().x());
    QApplication::activePopupWidget()->close();
  });
}

TEST_F(InstallWindow, TheCommandStandsAboveWhereThereIsNoRoomBelow) {
  show([](QDialog& dialog) {
    dialog.move(300, dialog.screen()->availableGeometry().bottom() - dialog.height());
    QPushButton& help = button(dialog, "Help");
    help.click();
    EXPECT_LT(QApplication::activePopupWidget()->frameGeometry().bottom(),
              help.mapToGlobal(help.rect().center()).y());
    QApplication::activePopupWidget()->close();
  });
}

TEST_F(InstallWindow, TheSameCommandIsShownAgain) {
  show([](QDialog& dialog) {
    button(dialog, "Help").click();
    QWidget* const popover = QApplication::activePopupWidget();
    popover->close();
    button(dialog, "Help").click();
    EXPECT_EQ(QApplication::activePopupWidget(), popover);
    popover->close();
  });
}

TEST_F(InstallWindow, TheCommandGoesWithTheWindow) {
  show([this](QDialog& dialog) {
    button(dialog, "Help").click();
    controller->dropComplete("/U/net.brellow.QuennelHelper/QuennelHelper.sh");
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
  });
}

// The icon on its way out.

class IconDrag : public InstallWindow {
 protected:
  static void send(QLabel& icon, QEvent::Type type, QPoint place) {
    const Qt::MouseButton button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
    QMouseEvent event(type, place, icon.mapToGlobal(place), button, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&icon, &event);
  }

  /// Drags the icon by the place at (40, 50) and has a look at the drag, which ends at once without
  /// a display but is still there. Answers whether there is one.
  static bool drag(QLabel& icon, const std::function<void(const QDrag&)>& look) {
    send(icon, QEvent::MouseButtonPress, {40, 50});
    send(icon, QEvent::MouseMove, {70, 80});
    const auto* const drag = icon.findChild<QDrag*>();
    if (drag) {
      look(*drag);
    }
    return drag != nullptr;
  }
};

TEST_F(IconDrag, ShowsTheIconHalfTransparent) {
  show([](QDialog& dialog) {
    QLabel& icon = label(dialog, "imageView");
    const QImage whole = icon.pixmap().toImage();
    const QPoint middle = whole.rect().center();
    ASSERT_GT(qAlpha(whole.pixel(middle)), 200);
    EXPECT_TRUE(drag(icon, [&](const QDrag& drag) {
      EXPECT_EQ(drag.pixmap().size(), icon.pixmap().size());
      EXPECT_NEAR(qAlpha(drag.pixmap().toImage().pixel(middle)), qAlpha(whole.pixel(middle)) / 2,
                  2);
    }));
  });
}

TEST_F(IconDrag, HangsAtThePlaceWhereTheIconWasTaken) {
  show([](QDialog& dialog) {
    EXPECT_TRUE(drag(label(dialog, "imageView"),
                     [](const QDrag& drag) { EXPECT_EQ(drag.hotSpot(), QPoint(40, 50)); }));
  });
}

TEST_F(IconDrag, OffersACopyAndNothingElse) {
  show([](QDialog& dialog) {
    EXPECT_TRUE(drag(label(dialog, "imageView"), [](const QDrag& drag) {
      EXPECT_EQ(drag.supportedActions(), Qt::DropActions(Qt::CopyAction));
    }));
  });
}

TEST_F(IconDrag, BeginsWithTheFirstClickIntoAnInactiveWindow) {
  show([](QDialog& dialog) {
    QDialog other(&dialog);
    other.show();
    other.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    ASSERT_FALSE(dialog.isActiveWindow());
    EXPECT_TRUE(drag(label(dialog, "imageView"), [](const QDrag&) {}));
  });
}

TEST_F(InstallWindow, StandsAboveTheWindowsOfOtherPrograms) {
  show([](QDialog& dialog) {
    EXPECT_TRUE(dialog.windowFlags().testFlag(Qt::WindowStaysOnTopHint));
  });
}

// The icon as the target of drops.

class DropTarget : public InstallWindow {
 protected:
  DropTarget() {
    QImage image(8, 8, QImage::Format_RGB32);
    image.fill(Qt::red);
    data.setImageData(image);
  }

  bool enter(QLabel& icon) {
    QDragEnterEvent event(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    event.ignore();
    QApplication::sendEvent(&icon, &event);
    return event.isAccepted();
  }
  static void leave(QLabel& icon) {
    QDragLeaveEvent event;
    QApplication::sendEvent(&icon, &event);
  }
  bool drop(QLabel& icon) {
    QDropEvent event(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    event.ignore();
    QApplication::sendEvent(&icon, &event);
    return event.isAccepted();
  }
  static QColor edge(QLabel& icon) { return icon.grab().toImage().pixelColor(1, 60); }

  QMimeData data;
};

TEST_F(DropTarget, RefusesEverythingUnlessItIsAllowed) {
  show([this](QDialog& dialog) {
    QLabel& icon = label(dialog, "imageView");
    const QColor before = edge(icon);
    EXPECT_FALSE(enter(icon));
    EXPECT_EQ(edge(icon), before);
  });
}

TEST_F(DropTarget, IsFramedInGrayWhileAPictureHovers) {
  show([this](QDialog& dialog) {
    controller->imageView()->setAllowDrop(true);
    QLabel& icon = label(dialog, "imageView");
    const QColor before = edge(icon);
    EXPECT_TRUE(enter(icon));
    EXPECT_EQ(edge(icon), QColor(Qt::gray));
    leave(icon);
    EXPECT_EQ(edge(icon), before);
  });
}

TEST_F(DropTarget, ShowsThePictureThatIsDropped) {
  show([this](QDialog& dialog) {
    controller->imageView()->setAllowDrop(true);
    QLabel& icon = label(dialog, "imageView");
    EXPECT_TRUE(enter(icon));
    EXPECT_TRUE(drop(icon));
    EXPECT_EQ(icon.pixmap().toImage().pixelColor(4, 4), QColor(Qt::red));
    EXPECT_EQ(dialog.windowTitle(), "(no name)");
    EXPECT_EQ(controller->imageView()->path(), std::nullopt);
  });
}

TEST_F(DropTarget, TakesThePathOfAFileThatIsDropped) {
  const std::string path = session.home() / "cat.png";
  show([this, &path](QDialog& dialog) {
    controller->imageView()->setAllowDrop(true);
    ASSERT_TRUE(qvariant_cast<QImage>(data.imageData()).save(QString::fromStdString(path)));
    data.clear();
    data.setUrls({QUrl::fromLocalFile(QString::fromStdString(path))});
    QLabel& icon = label(dialog, "imageView");
    EXPECT_TRUE(enter(icon));
    EXPECT_TRUE(drop(icon));
    EXPECT_EQ(controller->imageView()->path(), path);
    EXPECT_EQ(dialog.windowTitle(), "cat.png");
    EXPECT_EQ(icon.pixmap().toImage().pixelColor(4, 4), QColor(Qt::red));
  });
}

TEST_F(DropTarget, RefusesAFileThatIsNoPicture) {
  show([this](QDialog& dialog) {
    controller->imageView()->setAllowDrop(true);
    data.clear();
    data.setUrls({QUrl::fromLocalFile("/etc/passwd")});
    EXPECT_FALSE(enter(label(dialog, "imageView")));
  });
}

TEST_F(DropTarget, DrawsItselfAsPDF) {
  class Item : public PasteboardItem {
   public:
    std::string data;
    void setData(const std::string& itsData, const std::string&) override { data = itsData; }
  } item;
  show([&](QDialog&) { controller->imageView()->provideDataForType(item, "public.file-url"); });
  EXPECT_TRUE(item.data.starts_with("%PDF"));
}

}  // namespace
}  // namespace quennel::test
