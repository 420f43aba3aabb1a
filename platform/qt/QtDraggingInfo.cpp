#include "platform/qt/QtDraggingInfo.h"

#include <QtCore/QFile>
#include <QtCore/QMimeData>
#include <QtCore/QUrl>
#include <QtGui/QDropEvent>
#include <QtGui/QImageReader>

#include "platform/qt/QtImage.h"

namespace quennel {
namespace {

/// The toolkit knows one thing per drag, whose picture is the source's own.
class WholeDrag : public DraggingItem {
 public:
  explicit WholeDrag(const QMimeData& data) : _data(data) {}

  std::vector<std::string> types() const override {
    std::vector<std::string> types;
    for (const QString& format : _data.formats()) {
      types.push_back(format.toStdString());
    }
    return types;
  }
  std::shared_ptr<const Image> firstImageComponent() const override { return nullptr; }
  void setDraggingFrame(const Rect&, std::shared_ptr<const Image>) override {}

 private:
  const QMimeData& _data;
};

QString firstFile(const QMimeData& data) {
  for (const QUrl& url : data.urls()) {
    if (url.isLocalFile()) {
      return url.toLocalFile();
    }
  }
  return {};
}

}  // namespace

unsigned QtDraggingInfo::draggingSourceOperationMask() const {
  const bool canCopy = _event.possibleActions().testFlag(Qt::CopyAction);
  return static_cast<unsigned>(canCopy ? DragOperation::Copy : DragOperation::None);
}

bool QtDraggingInfo::canInitImage() const {
  const QMimeData& data = *_event.mimeData();
  return data.hasImage() || QImageReader(firstFile(data)).canRead();
}

std::shared_ptr<const Image> QtDraggingInfo::image() const {
  const QMimeData& data = *_event.mimeData();
  const QImage image =
      data.hasImage() ? qvariant_cast<QImage>(data.imageData()) : QImage(firstFile(data));
  return image.isNull() ? nullptr : std::make_shared<QtImage>(QPixmap::fromImage(image));
}

std::optional<std::string> QtDraggingInfo::fileURLPath() const {
  const QString file = firstFile(*_event.mimeData());
  return file.isEmpty() ? std::nullopt : std::optional(QFile::encodeName(file).toStdString());
}

void QtDraggingInfo::enumerateDraggingItems(const std::function<bool(DraggingItem&)>& visit) {
  WholeDrag item(*_event.mimeData());
  visit(item);
}

}  // namespace quennel
