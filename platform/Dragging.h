#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/Image.h"
#include "platform/values/Geometry.h"

namespace quennel {

class ImageViewResponder;

/// What may become of something that is dragged; as a mask, one bit each.
enum class DragOperation : unsigned { None = 0, Copy = 1 };

/// Where a drag is: over this program's windows or another's.
enum class DraggingContext { OutsideApplication = 0, WithinApplication = 1 };

/// Whether the picture of a drag that nobody takes glides back.
enum class SlideBack { No, Yes };

/// A press of the mouse button, with its place in the window.
struct MouseEvent {
  Point locationInWindow;
};

/// One of the things that a drag carries.
class DraggingItem {
 public:
  virtual ~DraggingItem() = default;

  virtual std::vector<std::string> types() const = 0;
  /// The first part of the picture that follows the pointer; may be null.
  virtual std::shared_ptr<const Image> firstImageComponent() const = 0;
  /// Replaces that picture, and where it is in the view.
  virtual void setDraggingFrame(const Rect& frame, std::shared_ptr<const Image> contents) = 0;
};

/// A drag that hovers over a view or is dropped there. Lives for the call that it is given to.
class DraggingInfo {
 public:
  virtual ~DraggingInfo() = default;

  /// The view that the drag started in; null when that is none of this program's.
  virtual const ImageViewResponder* draggingSource() const = 0;
  /// A mask of `DragOperation`.
  virtual unsigned draggingSourceOperationMask() const = 0;

  /// Whether an image can be made of what is dragged: a picture, or a file.
  virtual bool canInitImage() const = 0;
  virtual std::shared_ptr<const Image> image() const = 0;
  /// The path of the file that is dragged; nothing when there is none.
  virtual std::optional<std::string> fileURLPath() const = 0;

  /// Visits what is dragged until `visit` answers false.
  virtual void enumerateDraggingItems(const std::function<bool(DraggingItem&)>& visit) = 0;
};

}  // namespace quennel
