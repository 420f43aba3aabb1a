#include "installui/DragDropImageView.h"

#include <algorithm>
#include <utility>

#include "platform/FileManager.h"
#include "platform/GraphicsContext.h"
#include "platform/Pasteboard.h"
#include "platform/SecurityScope.h"
#include "platform/Window.h"
#include "platform/values/Path.h"

namespace quennel {
namespace {

/// Marks a dragging item as one of this view's own.
constexpr auto privateType = "net.brellow.QuennelHelper.DragDropImageView";
constexpr auto copyMask = static_cast<unsigned>(DragOperation::Copy);

bool isOwnItem(const DraggingItem& item) {
  const auto types = item.types();
  return std::find(types.begin(), types.end(), privateType) != types.end();
}

}  // namespace

DragDropImageView::DragDropImageView(ImageView& view, FileManager& fileManager,
                                     SecurityScope& securityScope)
    : _view(view), _fileManager(fileManager), _securityScope(securityScope) {
  _view.setResponder(this);
}

DragDropImageView::~DragDropImageView() { _view.setResponder(nullptr); }

std::optional<std::string> DragDropImageView::path() const {
  const std::lock_guard lock(_mutex);
  return _path;
}

void DragDropImageView::setPath(std::optional<std::string> path) {
  const std::lock_guard lock(_mutex);
  _path = std::move(path);
}

std::optional<std::string> DragDropImageView::destDir() const {
  const std::lock_guard lock(_mutex);
  return _destDir;
}

void DragDropImageView::setDestDir(std::optional<std::string> destDir) {
  const std::lock_guard lock(_mutex);
  _destDir = std::move(destDir);
}

bool DragDropImageView::makeItemExecutableAtPath(const std::string& path) {
  return _fileManager.setAttributes({.posixPermissions = 0755}, path);
}

Rect DragDropImageView::windowWillUseStandardFrame(const Window& window, const Rect&) {
  const auto image = _view.image();
  return window.frameRectForContentRect(
      {_view.window().frame().origin, image ? image->size() : Size()});
}

void DragDropImageView::provideDataForType(PasteboardItem& item, const std::string& type) const {
  if (type == pasteboard_type::fileURL) {
    item.setData(_view.dataWithPDFInsideRect(_view.bounds()), type);
  }
}

// The file goes out

void DragDropImageView::mouseDown(const MouseEvent& event) {
  if (!_allowDrag) {
    return;
  }
  constexpr int iconSize = 32;
  const Point place = _view.convertFromWindow(event.locationInWindow);
  const Rect rect{{place.x - iconSize / 2, place.y - iconSize / 2}, {iconSize, iconSize}};
  _view.dragPromisedFilesOfTypes({pasteboard_type::tiff}, rect, SlideBack::Yes, event);
}

void DragDropImageView::dragImage(std::shared_ptr<const Image>, Point, Point,
                                  const MouseEvent& event, SlideBack slideBack) {
  if (const auto image = _view.image()) {
    _view.dragImage(image->dissolved(0.5), _view.bounds().origin, Point(), event, slideBack);
  }
}

unsigned DragDropImageView::draggingSessionSourceOperationMask(DraggingContext) const {
  return copyMask;
}

std::vector<std::string> DragDropImageView::namesOfPromisedFilesDroppedAtDestination(
    const std::string& destination) {
  const std::string name = lastPathComponent(path().value_or(""));
  const std::string target = appendingPathComponent(destination, name);
  // Dropping it there is how the user says that it may be written there.
  _securityScope.allowForThisRun(destination, SecurityScope::Extent::Folder);
  const bool isWritten = writeFile(target);
  if (isWritten) {
    makeItemExecutableAtPath(target);
  }
  if (_delegate) {
    isWritten ? _delegate->dropComplete(target) : _delegate->dropFail(target);
  }
  return {name};
}

bool DragDropImageView::writeFile(const std::string& target) {
  const auto source = path();
  const auto contents = source ? _fileManager.contentsAtPath(*source) : std::nullopt;
  return contents && _fileManager.writeContents(*contents, target);
}

// Something comes in

DragOperation DragDropImageView::draggingEntered(DraggingInfo& info) {
  if (!_allowDrop || !info.canInitImage() || (info.draggingSourceOperationMask() & copyMask) == 0) {
    return DragOperation::None;
  }
  setHighlight(true);
  info.enumerateDraggingItems([this](DraggingItem& item) {
    if (!isOwnItem(item)) {
      return false;
    }
    item.setDraggingFrame(_view.bounds(), item.firstImageComponent());
    return true;
  });
  return DragOperation::Copy;
}

void DragDropImageView::draggingExited() { setHighlight(false); }

bool DragDropImageView::prepareForDragOperation(DraggingInfo& info) {
  setHighlight(false);
  return info.canInitImage();
}

bool DragDropImageView::performDragOperation(DraggingInfo& info) {
  if (info.draggingSource() == this) {
    return true;
  }
  if (info.canInitImage()) {
    _view.setImage(info.image());
  }
  const auto file = info.fileURLPath();
  setPath(file);
  _view.window().setTitle(file ? lastPathComponent(*file) : "(no name)");
  if (_delegate) {
    _delegate->dropComplete(file);
  }
  return true;
}

void DragDropImageView::drawRect(GraphicsContext& context, const Rect& rect) {
  if (!_highlight) {
    return;
  }
  context.setColor(Color::Gray);
  context.setDefaultLineWidth(5);
  context.strokeRect(rect);
}

void DragDropImageView::setHighlight(bool highlight) {
  _highlight = highlight;
  _view.setNeedsDisplay();
}

}  // namespace quennel
