#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/Dragging.h"
#include "platform/Image.h"
#include "platform/values/Geometry.h"

namespace quennel {

class GraphicsContext;
class ImageViewResponder;
class Window;

/// A view that shows an image, as it is on screen. What it does beyond that is its responder's.
class ImageView {
 public:
  virtual ~ImageView() = default;

  /// Not owned; null is none.
  virtual void setResponder(ImageViewResponder* responder) = 0;

  virtual Window& window() = 0;
  virtual Rect bounds() const = 0;
  virtual Point convertFromWindow(Point place) const = 0;
  virtual void setToolTip(const std::string& text) = 0;

  /// Null shows nothing.
  virtual void setImage(std::shared_ptr<const Image> image) = 0;
  virtual std::shared_ptr<const Image> image() const = 0;
  /// Asks for `drawRect`.
  virtual void setNeedsDisplay() = 0;
  /// What the view shows there, as a PDF document.
  virtual std::string dataWithPDFInsideRect(const Rect& rect) const = 0;

  /// Lets the user drag files that are written only when they are dropped. The platform answers
  /// with `dragImage` once the drag begins, with a picture of a file of the first type at `rect`.
  virtual void dragPromisedFilesOfTypes(const std::vector<std::string>& types, const Rect& rect,
                                        SlideBack slideBack, const MouseEvent& event) = 0;

  /// Begins the drag, with this picture at a place of the view. When the files are dropped, the
  /// responder is asked to write them.
  virtual void dragImage(std::shared_ptr<const Image> image, Point at, Point offset,
                         const MouseEvent& event, SlideBack slideBack) = 0;
};

/// What an image view asks of who gives it its behaviour.
class ImageViewResponder {
 public:
  virtual ~ImageViewResponder() = default;

  virtual void mouseDown(const MouseEvent& event) = 0;
  /// Whether a press that brings the window to the front counts as `mouseDown` too.
  virtual bool acceptsFirstMouse() const = 0;

  /// A drag begins. Nothing happens unless this calls `ImageView::dragImage`.
  virtual void dragImage(std::shared_ptr<const Image> image, Point at, Point offset,
                         const MouseEvent& event, SlideBack slideBack) = 0;
  /// A mask of `DragOperation`: what may become of what is dragged out.
  virtual unsigned draggingSessionSourceOperationMask(DraggingContext context) const = 0;
  /// The file that a drag promises; nothing for none.
  virtual std::optional<std::string> path() const = 0;
  /// Writes the promised files into the folder at `destination` and answers their names.
  virtual std::vector<std::string> namesOfPromisedFilesDroppedAtDestination(
      const std::string& destination) = 0;

  /// A drag has come over the view; the answer is what it would become here.
  virtual DragOperation draggingEntered(DraggingInfo& info) = 0;
  virtual void draggingExited() = 0;
  /// Something was dropped. False refuses it.
  virtual bool prepareForDragOperation(DraggingInfo& info) = 0;
  virtual bool performDragOperation(DraggingInfo& info) = 0;

  /// Draws above the image what lies in `rect`.
  virtual void drawRect(GraphicsContext& context, const Rect& rect) = 0;
};

}  // namespace quennel
