#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/GraphicsContext.h"
#include "platform/ImageView.h"
#include "platform/InstallScriptWindow.h"
#include "platform/Pasteboard.h"
#include "platform/Popover.h"

namespace quennel::test {

/// A picture that knows how it was made.
class FakeImage : public Image, public std::enable_shared_from_this<FakeImage> {
 public:
  explicit FakeImage(std::string description, Size size = {16, 16})
      : _description(std::move(description)), _size(size) {}

  const std::string& description() const { return _description; }

  Size size() const override { return _size; }
  std::shared_ptr<const Image> resized(Size size) const override {
    return std::make_shared<FakeImage>(_description, size);
  }
  std::shared_ptr<const Image> dissolved(double fraction) const override {
    const int percent = static_cast<int>(fraction * 100);
    return std::make_shared<FakeImage>(std::to_string(percent) + "% of " + _description, _size);
  }

 private:
  std::string _description;
  Size _size;
};

/// "" for none.
inline std::string descriptionOf(const std::shared_ptr<const Image>& image) {
  return image ? static_cast<const FakeImage&>(*image).description() : "";
}

class FakePasteboard : public Pasteboard {
 public:
  /// What was done, in order.
  std::vector<std::string> calls;

  void clearContents() override { calls.emplace_back("clear"); }
  void setString(const std::string& text, const std::string& type) override {
    calls.push_back(type + ": " + text);
  }
};

class FakeWindow : public Window {
 public:
  std::string title;

  void setTitle(const std::string& text) override { title = text; }
  void close() override {}
  Rect frame() const override { return {{300, 200}, {400, 300}}; }
  /// A title bar of 20, borders of 1.
  Rect frameRectForContentRect(const Rect& content) const override {
    return {{content.origin.x - 1, content.origin.y - 20},
            {content.size.width + 2, content.size.height + 21}};
  }
};

/// An image view in the left upper corner of a window with a border of 10.
class FakeImageView : public ImageView {
 public:
  struct PromisedDrag {
    std::vector<std::string> types;
    Rect rect;
    SlideBack slideBack;
  };
  struct StartedDrag {
    std::string image;
    Size imageSize;
    Point at;
    Point offset;
    SlideBack slideBack;
  };

  ImageViewResponder* responder = nullptr;
  FakeWindow itsWindow;
  std::string toolTip;
  std::shared_ptr<const Image> shown;
  int redraws = 0;
  std::vector<PromisedDrag> promised;
  std::vector<StartedDrag> started;

  void setResponder(ImageViewResponder* itsResponder) override { responder = itsResponder; }
  Window& window() override { return itsWindow; }
  Rect bounds() const override { return {{0, 0}, {128, 128}}; }
  Point convertFromWindow(Point place) const override { return {place.x - 10, place.y - 10}; }
  void setToolTip(const std::string& text) override { toolTip = text; }
  void setImage(std::shared_ptr<const Image> image) override { shown = std::move(image); }
  std::shared_ptr<const Image> image() const override { return shown; }
  void setNeedsDisplay() override { ++redraws; }
  std::string dataWithPDFInsideRect(const Rect& rect) const override {
    return "PDF of " + std::to_string(rect.size.width) + "x" + std::to_string(rect.size.height);
  }
  /// The platform, which begins the drag with a picture of its own.
  void dragPromisedFilesOfTypes(const std::vector<std::string>& types, const Rect& rect,
                                SlideBack slideBack, const MouseEvent& event) override {
    promised.push_back({types, rect, slideBack});
    responder->dragImage(std::make_shared<FakeImage>("a file"), rect.origin, {3, 4}, event,
                         slideBack);
  }
  void dragImage(std::shared_ptr<const Image> image, Point at, Point offset, const MouseEvent&,
                 SlideBack slideBack) override {
    started.push_back({descriptionOf(image), image->size(), at, offset, slideBack});
  }
};

class FakeTextField : public TextField {
 public:
  std::string text;
  std::string tip;

  void setStringValue(const std::string& value) override { text = value; }
  void setToolTip(const std::string& value) override { tip = value; }
  std::string toolTip() const override { return tip; }
};

/// What the install window and its popover show, and what was done with them. Stays when they are
/// gone.
struct ShownInstallWindow {
  struct ShownPopover {
    std::string command;
    Rect rect;
    RectEdge edge;
  };

  InstallScriptWindow::Owner* owner = nullptr;
  FakeTextField filename;
  FakeTextField message;
  FakeImageView icon;
  std::string expectedDestination;
  bool isOpen = false;

  std::string command;
  double fontSize = 0;
  PopoverBehavior behavior = PopoverBehavior::ApplicationDefined;
  int madePopovers = 0;
  std::vector<ShownPopover> popovers;

  /// What closing the window does, whoever does it.
  void close() {
    if (isOpen) {
      isOpen = false;
      owner->windowWillClose();
    }
  }
};

class FakeInstallScriptWindow : public InstallScriptWindow {
 public:
  FakeInstallScriptWindow(Owner& owner, ShownInstallWindow& shown) : _owner(owner), _shown(shown) {
    _shown.owner = &owner;
    _shown.isOpen = true;
  }
  ~FakeInstallScriptWindow() override {
    if (_shown.owner == &_owner) {
      _shown.owner = nullptr;
    }
  }

  void setTitle(const std::string&) override {}
  void close() override { _shown.close(); }
  Rect frame() const override { return {}; }
  Rect frameRectForContentRect(const Rect& content) const override { return content; }
  ImageView& imageView() override { return _shown.icon; }
  TextField& filenameTextField() override { return _shown.filename; }
  TextField& messageTextField() override { return _shown.message; }
  void setExpectedDestination(const std::string& folder) override {
    _shown.expectedDestination = folder;
  }

 private:
  Owner& _owner;
  ShownInstallWindow& _shown;
};

class FakeInstallScriptCmdView : public InstallScriptCmdView, private TextView {
 public:
  explicit FakeInstallScriptCmdView(ShownInstallWindow& shown) : _shown(shown) {}

  TextView& textView() override { return *this; }

 private:
  void setString(const std::string& text) override { _shown.command = text; }
  void setUserFixedPitchFont(double size) override { _shown.fontSize = size; }

  ShownInstallWindow& _shown;
};

class FakePopover : public Popover {
 public:
  explicit FakePopover(ShownInstallWindow& shown) : _shown(shown) { ++_shown.madePopovers; }

  void setContentView(InstallScriptCmdView&) override {}
  void setBehavior(PopoverBehavior behavior) override { _shown.behavior = behavior; }
  void showRelativeToRect(const Rect& rect, Window&, RectEdge edge) override {
    _shown.popovers.push_back({_shown.command, rect, edge});
  }

 private:
  ShownInstallWindow& _shown;
};

/// A button of the window.
class FakeView : public View {
 public:
  explicit FakeView(Rect frame) : _frame(frame) {}
  Rect frame() const override { return _frame; }

 private:
  Rect _frame;
};

}  // namespace quennel::test
