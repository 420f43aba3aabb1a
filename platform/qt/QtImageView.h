#pragma once

#include <QtWidgets/QLabel>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/ImageView.h"

namespace quennel {

class PromisedFileDrag;

/// An image view of the toolkit, which the interface file names.
class QtImageView final : public QLabel, public ImageView {
 public:
  explicit QtImageView(QWidget* parent);
  ~QtImageView() override;

  /// To be called first; not owned.
  void setWindow(Window& window) { _window = &window; }
  /// Where dropped files are looked for that others have copied.
  void setExpectedDestination(const std::string& folder) { _expectedDestination = folder; }
  const ImageViewResponder* responder() const { return _responder; }
  /// Whether what was dragged out is still on its way.
  bool isDragging() const;

  void setResponder(ImageViewResponder* responder) override { _responder = responder; }
  Window& window() override { return *_window; }
  Rect bounds() const override;
  Point convertFromWindow(Point place) const override;
  void setToolTip(const std::string& text) override;
  void setImage(std::shared_ptr<const Image> image) override;
  std::shared_ptr<const Image> image() const override { return _image; }
  void setNeedsDisplay() override { update(); }
  std::string dataWithPDFInsideRect(const Rect& rect) const override;
  void dragPromisedFilesOfTypes(const std::vector<std::string>& types, const Rect& rect,
                                SlideBack slideBack, const MouseEvent& event) override;
  void dragImage(std::shared_ptr<const Image> image, Point at, Point offset,
                 const MouseEvent& event, SlideBack slideBack) override;

 protected:
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dragLeaveEvent(QDragLeaveEvent* event) override;
  void dropEvent(QDropEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  /// A drag that begins as soon as the pointer has moved far enough.
  struct Promise {
    Rect rect;
    SlideBack slideBack;
    MouseEvent event;
  };

  Window* _window = nullptr;
  ImageViewResponder* _responder = nullptr;
  std::string _expectedDestination;
  std::shared_ptr<const Image> _image;
  std::optional<Promise> _promise;
  std::unique_ptr<PromisedFileDrag> _drag;
};

}  // namespace quennel
