#pragma once

#include <QtGui/QPixmap>
#include <memory>
#include <string>

#include "platform/Image.h"

class QIcon;

namespace quennel {

/// A picture of the toolkit. The icon of a file is drawn for the size that it is asked for.
class QtImage : public Image {
 public:
  explicit QtImage(QPixmap pixmap) : _pixmap(std::move(pixmap)) {}

  /// The icon that the desktop has for the file at `path`.
  static std::shared_ptr<const QtImage> iconForFile(const std::string& path);
  /// The pixels of a picture that came from here; none for null.
  static QPixmap pixmapOf(const std::shared_ptr<const Image>& image);

  Size size() const override;
  std::shared_ptr<const Image> resized(Size size) const override;
  std::shared_ptr<const Image> dissolved(double fraction) const override;

 private:
  QPixmap _pixmap;
};

}  // namespace quennel
