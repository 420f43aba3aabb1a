#include "platform/qt/QtImageView.h"

#include <QtCore/QBuffer>
#include <QtGui/QMouseEvent>
#include <QtGui/QPainter>
#include <QtGui/QPdfWriter>
#include <QtWidgets/QApplication>
#include <QtWidgets/QStyle>
#include <utility>

#include "platform/qt/PanelWindow.h"
#include "platform/qt/PromisedFileDrag.h"
#include "platform/qt/QtDraggingInfo.h"
#include "platform/qt/QtGraphicsContext.h"
#include "platform/qt/QtImage.h"

namespace quennel {
namespace {

Rect rectOf(const QRect& rect) { return {{rect.x(), rect.y()}, {rect.width(), rect.height()}}; }
QPoint pointOf(Point point) { return {point.x, point.y}; }

const ImageViewResponder* sourceOf(const QDropEvent& event) {
  const auto* const view = dynamic_cast<const QtImageView*>(event.source());
  return view ? view->responder() : nullptr;
}

}  // namespace

QtImageView::QtImageView(QWidget* parent) : QLabel(parent) { setAcceptDrops(true); }

QtImageView::~QtImageView() = default;

bool QtImageView::isDragging() const { return _drag && _drag->isUnderWay(); }

Rect QtImageView::bounds() const { return rectOf(rect()); }

Point QtImageView::convertFromWindow(Point place) const {
  const QPoint point = mapFrom(QWidget::window(), pointOf(place));
  return {point.x(), point.y()};
}

void QtImageView::setToolTip(const std::string& text) { QLabel::setToolTip(toolTipText(text)); }

void QtImageView::setImage(std::shared_ptr<const Image> image) {
  _image = std::move(image);
  setPixmap(QtImage::pixmapOf(_image));
}

std::string QtImageView::dataWithPDFInsideRect(const Rect& rect) const {
  QBuffer buffer;
  buffer.open(QIODevice::WriteOnly);
  QPdfWriter writer(&buffer);
  writer.setResolution(72);
  writer.setPageSize(QPageSize(QSizeF(rect.size.width, rect.size.height), QPageSize::Point));
  writer.setPageMargins(QMarginsF());
  QPainter painter(&writer);
  painter.drawPixmap(-pointOf(rect.origin), QtImage::pixmapOf(_image));
  painter.end();
  return buffer.data().toStdString();
}

void QtImageView::dragPromisedFilesOfTypes(const std::vector<std::string>&, const Rect& rect,
                                           SlideBack slideBack, const MouseEvent& event) {
  _promise = {rect, slideBack, event};
}

void QtImageView::dragImage(std::shared_ptr<const Image> image, Point at, Point,
                            const MouseEvent& event, SlideBack) {
  const auto path = _responder ? _responder->path() : std::nullopt;
  if (!path) {
    return;
  }
  const QPoint press = pointOf(convertFromWindow(event.locationInWindow));
  const auto write = [this](const std::string& folder) {
    if (_responder) {
      _responder->namesOfPromisedFilesDroppedAtDestination(folder);
    }
  };
  _drag = std::make_unique<PromisedFileDrag>(FilePromise(*path, write), _expectedDestination);
  _drag->run(*this, QtImage::pixmapOf(image), press - pointOf(at));
}

void QtImageView::mousePressEvent(QMouseEvent* event) {
  _promise.reset();
  const bool counts = isActiveWindow() || (_responder && _responder->acceptsFirstMouse());
  if (event->button() == Qt::LeftButton && _responder && counts) {
    const QPoint place = mapTo(QWidget::window(), event->pos());
    _responder->mouseDown({{place.x(), place.y()}});
  }
}

void QtImageView::mouseMoveEvent(QMouseEvent* event) {
  if (!_promise || !_responder) {
    return;
  }
  const QPoint press = pointOf(convertFromWindow(_promise->event.locationInWindow));
  if ((event->pos() - press).manhattanLength() < QApplication::startDragDistance()) {
    return;
  }
  const Promise promise = *std::exchange(_promise, std::nullopt);
  const QSize size(promise.rect.size.width, promise.rect.size.height);
  const auto anyFile =
      std::make_shared<QtImage>(style()->standardIcon(QStyle::SP_FileIcon).pixmap(size));
  _responder->dragImage(anyFile, promise.rect.origin, Point(), promise.event, promise.slideBack);
}

void QtImageView::mouseReleaseEvent(QMouseEvent*) { _promise.reset(); }

void QtImageView::dragEnterEvent(QDragEnterEvent* event) {
  QtDraggingInfo info(*event, sourceOf(*event));
  const bool isTaken = _responder && _responder->draggingEntered(info) == DragOperation::Copy;
  event->setDropAction(isTaken ? Qt::CopyAction : Qt::IgnoreAction);
  event->setAccepted(isTaken);
}

void QtImageView::dragLeaveEvent(QDragLeaveEvent*) {
  if (_responder) {
    _responder->draggingExited();
  }
}

void QtImageView::dropEvent(QDropEvent* event) {
  QtDraggingInfo info(*event, sourceOf(*event));
  const bool isTaken = _responder && _responder->prepareForDragOperation(info) &&
                       _responder->performDragOperation(info);
  event->setDropAction(isTaken ? Qt::CopyAction : Qt::IgnoreAction);
  event->setAccepted(isTaken);
}

void QtImageView::paintEvent(QPaintEvent* event) {
  QLabel::paintEvent(event);
  if (_responder) {
    QPainter painter(this);
    QtGraphicsContext context(painter);
    _responder->drawRect(context, rectOf(event->rect()));
  }
}

}  // namespace quennel
