#include "platform/qt/QtGraphicsContext.h"

#include <QtGui/QPainter>
#include <QtGui/QPen>

namespace quennel {

double QtGraphicsContext::_defaultLineWidth = 1;

void QtGraphicsContext::setColor(Color color) { _color = color; }

void QtGraphicsContext::strokeRect(const Rect& rect) {
  QPen pen(_color == Color::Gray ? Qt::gray : Qt::black, _defaultLineWidth);
  pen.setJoinStyle(Qt::MiterJoin);
  _painter.setPen(pen);
  _painter.setBrush(Qt::NoBrush);
  _painter.drawRect(rect.origin.x, rect.origin.y, rect.size.width, rect.size.height);
}

}  // namespace quennel
