#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

#include "platform/Image.h"
#include "platform/ImageView.h"
#include "platform/Pasteboard.h"
#include "platform/Popover.h"
#include "platform/Windowing.h"
#include "platform/linux/events/EventRunLoop.h"
#include "platform/linux/ui/LazyUserInterface.h"
#include "tests/support/FakeBundle.h"
#include "tests/support/FakeWindowing.h"
#include "tests/support/FreshSession.h"

namespace quennel::test {
namespace {

class FakeWindows {
 public:
  Windowing& windowing() { return _windowing; }
  /// Shows the window and lets `user` act in it.
  void run(Window& window, const std::function<void()>& user) {
    _windowing.whileWindowShown = user;
    _windowing.runModalForWindow(window);
  }

 private:
  CallLog _log;
  FakeWindowing _windowing{_log};
};

class QtWindows {
 public:
  Windowing& windowing() { return *_userInterface.windowing(); }
  void run(Window& window, const std::function<void()>& user) {
    _loop.dispatchAsync([&window, user] {
      user();
      window.close();
    });
    windowing().runModalForWindow(window);
  }

 private:
  FreshSession _session;
  EnvironmentVariable _platform{"QT_QPA_PLATFORM", "offscreen"};
  EnvironmentVariable _logging{"QT_LOGGING_RULES", "default.warning=false"};
  EventRunLoop _loop;
  FakeBundle _bundle;
  LazyUserInterface _userInterface{_loop, _bundle, USER_INTERFACE_MODULE};
};

template <typename Subject>
class WindowingContract : public testing::Test, public InstallScriptWindow::Owner {
 protected:
  Windowing& windowing() { return subject.windowing(); }

  void didClickHelp(const View*) override {}
  void copyPath(const View*) override {}
  void openDestination(const View*) override {}
  void windowWillClose() override {
    ++closings;
    windowing().stopModal();
  }

  Subject subject;
  std::unique_ptr<InstallScriptWindow> window = windowing().loadInstallScriptWindow(*this);
  int closings = 0;
};

using Subjects = testing::Types<FakeWindows, QtWindows>;

TYPED_TEST_SUITE(WindowingContract, Subjects);

TYPED_TEST(WindowingContract, AWindowIsShownUntilItIsClosed) {
  bool wasShown = false;
  this->subject.run(*this->window, [&] {
    wasShown = true;
    EXPECT_EQ(this->closings, 0);
  });
  EXPECT_TRUE(wasShown);
  EXPECT_EQ(this->closings, 1);
}

TYPED_TEST(WindowingContract, AWindowClosesOnce) {
  this->subject.run(*this->window, [this] {
    this->window->close();
    this->window->close();
  });
  this->window->close();
  EXPECT_EQ(this->closings, 1);
}

TYPED_TEST(WindowingContract, ThereMayBeNothingToStop) {
  this->windowing().stopModal();
  this->subject.run(*this->window, [] {});
  EXPECT_EQ(this->closings, 1);
}

TYPED_TEST(WindowingContract, AToolTipIsToldAsItWasSet) {
  const std::string tip = "/A/<b>&amp;</b>/QuennelHelper.sh";
  this->window->filenameTextField().setToolTip(tip);
  EXPECT_EQ(this->window->filenameTextField().toolTip(), tip);
}

TYPED_TEST(WindowingContract, AnImageViewShowsNothingAtFirst) {
  EXPECT_EQ(this->window->imageView().image(), nullptr);
}

TYPED_TEST(WindowingContract, AnImageViewShowsWhatItIsGiven) {
  const auto icon = this->windowing().iconForFile("/A/B/QuennelHelper.sh");
  this->window->imageView().setImage(icon);
  EXPECT_EQ(this->window->imageView().image(), icon);
  this->window->imageView().setImage(nullptr);
  EXPECT_EQ(this->window->imageView().image(), nullptr);
}

TYPED_TEST(WindowingContract, AFileThatIsMissingHasAnIconToo) {
  const auto icon = this->windowing().iconForFile("/no/such/file");
  ASSERT_NE(icon, nullptr);
  EXPECT_GT(icon->size().width, 0);
}

TYPED_TEST(WindowingContract, AnImageGetsTheSizeItIsDrawnIn) {
  const auto icon = this->windowing().iconForFile("/A/B/QuennelHelper.sh");
  EXPECT_EQ(icon->resized({128, 128})->size(), (Size{128, 128}));
  EXPECT_EQ(icon->resized({20, 30})->dissolved(0.5)->size(), (Size{20, 30}));
}

TYPED_TEST(WindowingContract, APopoverMayBeShownAgainAndGoBeforeTheWindow) {
  const auto view = this->windowing().loadInstallScriptCmdView();
  const auto popover = this->windowing().makePopover();
  popover->setContentView(*view);
  popover->setBehavior(PopoverBehavior::Transient);
  this->subject.run(*this->window, [&] {
    popover->showRelativeToRect({{10, 10}, {20, 20}}, *this->window, RectEdge::MinY);
    popover->showRelativeToRect({}, *this->window, RectEdge::MaxX);
  });
  EXPECT_EQ(this->closings, 1);
}

TYPED_TEST(WindowingContract, APlaceInTheWindowIsOneInTheView) {
  ImageView& view = this->window->imageView();
  const Point origin = view.convertFromWindow({0, 0});
  EXPECT_EQ(view.convertFromWindow({7, 9}), (Point{origin.x + 7, origin.y + 9}));
  EXPECT_EQ(view.bounds().origin, Point());
}

TEST(Windowing, HasNoWindowWithoutADisplay) {
  class Nobody : public InstallScriptWindow::Owner {
    void didClickHelp(const View*) override {}
    void copyPath(const View*) override {}
    void openDestination(const View*) override {}
    void windowWillClose() override {}
  } nobody;
  const FreshSession session;
  EventRunLoop loop;
  const FakeBundle bundle;
  LazyUserInterface userInterface(loop, bundle, USER_INTERFACE_MODULE);
  ASSERT_NE(userInterface.windowing(), nullptr);
  EXPECT_EQ(userInterface.windowing()->loadInstallScriptWindow(nobody), nullptr);
}

TEST(Windowing, IsNotThereWithoutTheModule) {
  const FreshSession session;
  EventRunLoop loop;
  const FakeBundle bundle;
  LazyUserInterface userInterface(loop, bundle, "/no/such/module.so");
  EXPECT_EQ(userInterface.windowing(), nullptr);
}

}  // namespace
}  // namespace quennel::test
