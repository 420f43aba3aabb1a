#include "platform/qt/QtImage.h"

#include <QtCore/QMimeDatabase>
#include <QtCore/QMimeType>
#include <QtGui/QIcon>
#include <QtGui/QPainter>
#include <QtWidgets/QApplication>
#include <QtWidgets/QStyle>

namespace quennel {
namespace {

/// Larger than it is ever shown, so that it can be made smaller without loss.
constexpr int iconSize = 256;

QIcon iconOfType(const QMimeType& type) {
  for (const QString& name : {type.iconName(), type.genericIconName(), QString("text-x-generic")}) {
    if (QIcon::hasThemeIcon(name)) {
      return QIcon::fromTheme(name);
    }
  }
  return QApplication::style()->standardIcon(QStyle::SP_FileIcon);
}

}  // namespace

std::shared_ptr<const QtImage> QtImage::iconForFile(const std::string& path) {
  const QMimeType type = QMimeDatabase().mimeTypeForFile(QString::fromStdString(path));
  return std::make_shared<QtImage>(iconOfType(type).pixmap(QSize(iconSize, iconSize)));
}

QPixmap QtImage::pixmapOf(const std::shared_ptr<const Image>& image) {
  return image ? static_cast<const QtImage&>(*image)._pixmap : QPixmap();
}

Size QtImage::size() const {
  const QSize size = _pixmap.deviceIndependentSize().toSize();
  return {size.width(), size.height()};
}

std::shared_ptr<const Image> QtImage::resized(Size size) const {
  const qreal ratio = qApp->devicePixelRatio();
  QPixmap result = _pixmap.scaled(QSize(size.width, size.height) * ratio, Qt::IgnoreAspectRatio,
                                  Qt::SmoothTransformation);
  result.setDevicePixelRatio(ratio);
  return std::make_shared<QtImage>(result);
}

std::shared_ptr<const Image> QtImage::dissolved(double fraction) const {
  QPixmap result(_pixmap.size());
  result.setDevicePixelRatio(_pixmap.devicePixelRatio());
  result.fill(Qt::transparent);
  QPainter painter(&result);
  painter.setOpacity(fraction);
  painter.drawPixmap(0, 0, _pixmap);
  painter.end();
  return std::make_shared<QtImage>(result);
}

}  // namespace quennel
