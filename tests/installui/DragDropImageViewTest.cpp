#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "installui/DragDropImageView.h"
#include "tests/support/FakeDesktop.h"

namespace quennel::test {
namespace {

class Delegate : public DragDropImageViewDelegate {
 public:
  std::vector<std::string> calls;

  void dropComplete(const std::optional<std::string>& path) override {
    calls.push_back("complete " + path.value_or("(nothing)"));
  }
  void dropFail(const std::optional<std::string>& path) override {
    calls.push_back("fail " + path.value_or("(nothing)"));
  }
};

class FakeDraggingItem : public DraggingItem {
 public:
  explicit FakeDraggingItem(std::vector<std::string> types) : itsTypes(std::move(types)) {}

  std::vector<std::string> itsTypes;
  std::optional<Rect> frame;
  std::string contents;

  std::vector<std::string> types() const override { return itsTypes; }
  std::shared_ptr<const Image> firstImageComponent() const override {
    return std::make_shared<FakeImage>("component");
  }
  void setDraggingFrame(const Rect& itsFrame, std::shared_ptr<const Image> image) override {
    frame = itsFrame;
    contents = descriptionOf(image);
  }
};

class FakeDraggingInfo : public DraggingInfo {
 public:
  const ImageViewResponder* source = nullptr;
  unsigned mask = 1;
  bool hasImage = true;
  std::optional<std::string> file = "/photos/cat.png";
  std::vector<FakeDraggingItem> items;
  int visited = 0;

  const ImageViewResponder* draggingSource() const override { return source; }
  unsigned draggingSourceOperationMask() const override { return mask; }
  bool canInitImage() const override { return hasImage; }
  std::shared_ptr<const Image> image() const override {
    return std::make_shared<FakeImage>("dropped");
  }
  std::optional<std::string> fileURLPath() const override { return file; }
  void enumerateDraggingItems(const std::function<bool(DraggingItem&)>& visit) override {
    for (auto& item : items) {
      ++visited;
      if (!visit(item)) {
        return;
      }
    }
  }
};

/// Strokes with the line width of the whole process.
class FakeGraphicsContext : public GraphicsContext {
 public:
  static double defaultLineWidth;
  std::vector<std::string> calls;

  void setColor(Color color) override { calls.emplace_back(color == Color::Gray ? "gray" : "?"); }
  void setDefaultLineWidth(double width) override { defaultLineWidth = width; }
  void strokeRect(const Rect& rect) override {
    calls.push_back("rect " + std::to_string(rect.origin.x) + "," + std::to_string(rect.origin.y) +
                    " " + std::to_string(rect.size.width) + "x" + std::to_string(rect.size.height));
  }
};
double FakeGraphicsContext::defaultLineWidth = 1;

class FakePasteboardItem : public PasteboardItem {
 public:
  std::map<std::string, std::string> data;

  void setData(const std::string& itsData, const std::string& type) override {
    data[type] = itsData;
  }
};

class IconView : public testing::Test {
 protected:
  IconView() {
    fakes.fileManager.addFile("/app/s.sh", "#!/bin/sh\n", 0644);
    fakes.fileManager.addDirectory("/d");
    view.setPath("/app/s.sh");
    view.setDelegate(&delegate);
    view.setImage(std::make_shared<FakeImage>("icon", Size{128, 128}));
  }

  std::vector<std::string> dropAt(const std::string& folder) {
    return screen.responder->namesOfPromisedFilesDroppedAtDestination(folder);
  }
  std::optional<std::uint16_t> modeOf(const std::string& path) const {
    const auto attributes = fakes.fileManager.attributesOfItemAtPath(path);
    return attributes ? attributes->posixPermissions : std::nullopt;
  }
  void hover() { EXPECT_EQ(view.draggingEntered(drag), DragOperation::Copy); }
  std::vector<std::string> drawn() {
    FakeGraphicsContext context;
    view.drawRect(context, {{1, 2}, {3, 4}});
    return context.calls;
  }

  FakeDesktop fakes;
  FakeImageView screen;
  Delegate delegate;
  FakeDraggingInfo drag;
  DragDropImageView view{screen, fakes.fileManager, fakes.securityScope};
};

using Calls = std::vector<std::string>;

TEST_F(IconView, MayBeDraggedFromButTakesNoDropsAtFirst) {
  EXPECT_TRUE(view.allowDrag());
  EXPECT_FALSE(view.allowDrop());
  EXPECT_EQ(view.destDir(), std::nullopt);
}

TEST_F(IconView, KeepsADestinationThatItDoesNotUse) {
  view.setDestDir("/elsewhere");
  EXPECT_EQ(view.destDir(), "/elsewhere");
  dropAt("/d");
  EXPECT_TRUE(fakes.fileManager.fileExistsAtPath("/d/s.sh"));
}

TEST_F(IconView, IsLetGoByItsViewWhenItGoes) {
  FakeImageView other;
  {
    const DragDropImageView shortLived(other, fakes.fileManager, fakes.securityScope);
    EXPECT_EQ(other.responder, &shortLived);
  }
  EXPECT_EQ(other.responder, nullptr);
}

// Dragging out

TEST_F(IconView, AClickPromisesAFile) {
  screen.responder->mouseDown({{60, 40}});
  ASSERT_EQ(screen.promised.size(), 1u);
  EXPECT_EQ(screen.promised[0].types, (Calls{"public.tiff"}));
  EXPECT_EQ(screen.promised[0].rect, (Rect{{50 - 16, 30 - 16}, {32, 32}}));
  EXPECT_EQ(screen.promised[0].slideBack, SlideBack::Yes);
}

TEST_F(IconView, AClickDoesNothingWhenDraggingIsNotAllowed) {
  view.setAllowDrag(false);
  screen.responder->mouseDown({{60, 40}});
  EXPECT_TRUE(screen.promised.empty());
  EXPECT_TRUE(screen.started.empty());
  EXPECT_TRUE(delegate.calls.empty());
  EXPECT_EQ(screen.redraws, 0);
}

TEST_F(IconView, TheDragShowsTheWholeIconAtHalfItsOpacity) {
  screen.responder->mouseDown({{60, 40}});
  ASSERT_EQ(screen.started.size(), 1u);
  EXPECT_EQ(screen.started[0].image, "50% of icon");
  EXPECT_EQ(screen.started[0].imageSize, (Size{128, 128}));
  EXPECT_EQ(screen.started[0].at, (Point{0, 0}));
  EXPECT_EQ(screen.started[0].offset, (Point{0, 0}));
  EXPECT_EQ(screen.started[0].slideBack, SlideBack::Yes);
}

TEST_F(IconView, WithoutAnImageNoDragStarts) {
  view.setImage(nullptr);
  screen.responder->mouseDown({{60, 40}});
  EXPECT_TRUE(screen.started.empty());
}

TEST_F(IconView, AFirstClickIntoTheWindowStartsADragToo) {
  EXPECT_TRUE(screen.responder->acceptsFirstMouse());
}

TEST_F(IconView, ADragCopiesWhereverItEnds) {
  EXPECT_EQ(view.draggingSessionSourceOperationMask(DraggingContext::OutsideApplication), 1u);
  EXPECT_EQ(view.draggingSessionSourceOperationMask(DraggingContext::WithinApplication), 1u);
}

TEST_F(IconView, ADropWritesTheFileAndMakesItExecutable) {
  EXPECT_EQ(dropAt("/d"), Calls{"s.sh"});
  EXPECT_EQ(fakes.fileManager.contentsAtPath("/d/s.sh"), "#!/bin/sh\n");
  EXPECT_EQ(modeOf("/d/s.sh"), 0755);
  EXPECT_EQ(delegate.calls, Calls{"complete /d/s.sh"});
}

TEST_F(IconView, ADropReplacesAnExistingFile) {
  fakes.fileManager.addFile("/d/s.sh", "something longer than the script", 0600);
  dropAt("/d");
  EXPECT_EQ(fakes.fileManager.contentsAtPath("/d/s.sh"), "#!/bin/sh\n");
  EXPECT_EQ(modeOf("/d/s.sh"), 0755);
}

TEST_F(IconView, ADropIntoAnyFolderIsComplete) {
  view.setDestDir("/elsewhere");
  dropAt("/d/");
  EXPECT_EQ(delegate.calls, Calls{"complete /d/s.sh"});
}

TEST_F(IconView, ADropIntoAProtectedFolderFails) {
  fakes.fileManager.protectedPaths = {"/d"};
  EXPECT_EQ(dropAt("/d"), Calls{"s.sh"});
  EXPECT_EQ(delegate.calls, Calls{"fail /d/s.sh"});
}

TEST_F(IconView, ADropOfAFileThatCannotBeReadFails) {
  view.setPath("/app/gone.sh");
  EXPECT_EQ(dropAt("/d"), Calls{"gone.sh"});
  EXPECT_EQ(delegate.calls, Calls{"fail /d/gone.sh"});
  EXPECT_FALSE(fakes.fileManager.fileExistsAtPath("/d/gone.sh"));
}

TEST_F(IconView, ADropWithoutAFileFails) {
  view.setPath(std::nullopt);
  dropAt("/d");
  EXPECT_EQ(delegate.calls, Calls{"fail /d"});
}

TEST_F(IconView, PermissionsThatCannotBeSetAreNoFailure) {
  fakes.fileManager.failNext("setAttributes");
  dropAt("/d");
  EXPECT_EQ(delegate.calls, Calls{"complete /d/s.sh"});
}

TEST_F(IconView, ThePathCountsAtTheMomentOfTheDrop) {
  fakes.fileManager.addFile("/app/other.sh", "other");
  screen.responder->mouseDown({{60, 40}});
  view.setPath("/app/other.sh");
  EXPECT_EQ(dropAt("/d"), Calls{"other.sh"});
  EXPECT_EQ(fakes.fileManager.contentsAtPath("/d/other.sh"), "other");
}

TEST_F(IconView, TheFolderOfADropIsAccessibleFromThenOn) {
  using Allowed = decltype(fakes.securityScope.allowed);
  dropAt("/d");
  EXPECT_EQ(fakes.securityScope.allowed, (Allowed{{"/d", SecurityScope::Extent::Folder}}));
}

TEST_F(IconView, ADelegateMayAnswerNothing) {
  class Silent : public DragDropImageViewDelegate {
  } silent;
  view.setDelegate(&silent);
  EXPECT_EQ(dropAt("/d"), Calls{"s.sh"});
  EXPECT_EQ(dropAt("/missing"), Calls{"s.sh"});
  view.setDelegate(nullptr);
  EXPECT_EQ(dropAt("/d"), Calls{"s.sh"});
  EXPECT_EQ(dropAt("/missing"), Calls{"s.sh"});
}

TEST_F(IconView, MakesAFileExecutable) {
  EXPECT_TRUE(view.makeItemExecutableAtPath("/app/s.sh"));
  EXPECT_EQ(modeOf("/app/s.sh"), 0755);
  EXPECT_FALSE(view.makeItemExecutableAtPath("/app/gone.sh"));
}

// Dropping in

TEST_F(IconView, RefusesDropsUnlessAllowed) {
  EXPECT_EQ(view.draggingEntered(drag), DragOperation::None);
  EXPECT_EQ(screen.redraws, 0);
  EXPECT_TRUE(drawn().empty());
}

TEST_F(IconView, RefusesWhatIsNoImage) {
  view.setAllowDrop(true);
  drag.hasImage = false;
  EXPECT_EQ(view.draggingEntered(drag), DragOperation::None);
  EXPECT_TRUE(drawn().empty());
}

TEST_F(IconView, RefusesWhatMayNotBeCopied) {
  view.setAllowDrop(true);
  drag.mask = ~1u;
  EXPECT_EQ(view.draggingEntered(drag), DragOperation::None);
  EXPECT_TRUE(drawn().empty());
}

TEST_F(IconView, IsFramedWhileSomethingHovers) {
  view.setAllowDrop(true);
  hover();
  EXPECT_EQ(screen.redraws, 1);
  EXPECT_EQ(drawn(), (Calls{"gray", "rect 1,2 3x4"}));
  view.draggingExited();
  EXPECT_EQ(screen.redraws, 2);
  EXPECT_TRUE(drawn().empty());
}

TEST_F(IconView, TheFrameSetsTheLineWidthOfTheWholeProcess) {
  FakeGraphicsContext::defaultLineWidth = 1;
  view.setAllowDrop(true);
  drawn();
  EXPECT_EQ(FakeGraphicsContext::defaultLineWidth, 1);
  hover();
  drawn();
  view.draggingExited();
  EXPECT_EQ(FakeGraphicsContext::defaultLineWidth, 5);
}

TEST_F(IconView, OwnItemsThatHoverFillTheViewUpToTheFirstOther) {
  view.setAllowDrop(true);
  const std::string own = "net.brellow.QuennelHelper.DragDropImageView";
  drag.items = {FakeDraggingItem({"a", own}), FakeDraggingItem({"a"}), FakeDraggingItem({own})};
  hover();
  EXPECT_EQ(drag.items[0].frame, (Rect{{0, 0}, {128, 128}}));
  EXPECT_EQ(drag.items[0].contents, "component");
  EXPECT_EQ(drag.items[1].frame, std::nullopt);
  EXPECT_EQ(drag.items[2].frame, std::nullopt);
  EXPECT_EQ(drag.visited, 2);
}

TEST_F(IconView, TheFrameGoesBeforeADrop) {
  view.setAllowDrop(true);
  hover();
  EXPECT_TRUE(view.prepareForDragOperation(drag));
  EXPECT_EQ(screen.redraws, 2);
  EXPECT_TRUE(drawn().empty());
  drag.hasImage = false;
  EXPECT_FALSE(view.prepareForDragOperation(drag));
}

TEST_F(IconView, ADroppedFileIsShown) {
  EXPECT_TRUE(view.performDragOperation(drag));
  EXPECT_EQ(descriptionOf(screen.shown), "dropped");
  EXPECT_EQ(view.path(), "/photos/cat.png");
  EXPECT_EQ(screen.itsWindow.title, "cat.png");
  EXPECT_EQ(delegate.calls, Calls{"complete /photos/cat.png"});
}

TEST_F(IconView, ADroppedPictureWithoutAFileHasNoName) {
  drag.file = std::nullopt;
  EXPECT_TRUE(view.performDragOperation(drag));
  EXPECT_EQ(view.path(), std::nullopt);
  EXPECT_EQ(screen.itsWindow.title, "(no name)");
  EXPECT_EQ(delegate.calls, Calls{"complete (nothing)"});
}

TEST_F(IconView, ADroppedFileThatIsNoPictureKeepsTheImage) {
  drag.hasImage = false;
  EXPECT_TRUE(view.performDragOperation(drag));
  EXPECT_EQ(descriptionOf(screen.shown), "icon");
  EXPECT_EQ(view.path(), "/photos/cat.png");
}

TEST_F(IconView, WhatIsDroppedBackChangesNothing) {
  view.setAllowDrop(true);
  drag.source = &view;
  EXPECT_TRUE(view.performDragOperation(drag));
  EXPECT_EQ(view.path(), "/app/s.sh");
  EXPECT_EQ(descriptionOf(screen.shown), "icon");
  EXPECT_TRUE(screen.itsWindow.title.empty());
  EXPECT_TRUE(delegate.calls.empty());
}

TEST_F(IconView, ADropNeedsNoDelegate) {
  view.setDelegate(nullptr);
  EXPECT_TRUE(view.performDragOperation(drag));
}

// The rest

TEST_F(IconView, AZoomedWindowFitsTheImage) {
  const FakeWindow zoomed;
  EXPECT_EQ(view.windowWillUseStandardFrame(zoomed, {{0, 0}, {9999, 9999}}),
            (Rect{{300 - 1, 200 - 20}, {128 + 2, 128 + 21}}));
}

TEST_F(IconView, GivesItsPictureForAFileOnly) {
  FakePasteboardItem item;
  view.provideDataForType(item, "public.tiff");
  EXPECT_TRUE(item.data.empty());
  view.provideDataForType(item, "public.file-url");
  EXPECT_EQ(item.data["public.file-url"], "PDF of 128x128");
}

}  // namespace
}  // namespace quennel::test
