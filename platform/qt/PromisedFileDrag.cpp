#include "platform/qt/PromisedFileDrag.h"

#include <QtGui/QPixmap>
#include <QtWidgets/QWidget>
#include <utility>

#include "platform/qt/ArrivalWatch.h"
#include "platform/qt/ExtractionService.h"
#include "platform/qt/PromisedFileData.h"

namespace quennel {

PromisedFileDrag::PromisedFileDrag(FilePromise promise, const std::string& destination)
    : _promise(std::make_shared<FilePromise>(std::move(promise))),
      _arrival(std::make_shared<ArrivalWatch>(_promise, destination)),
      _extraction(ExtractionService::create(_promise)) {}

PromisedFileDrag::~PromisedFileDrag() = default;

void PromisedFileDrag::run(QWidget& source, const QPixmap& picture, QPoint hotSpot) {
  // The toolkit deletes it, and the data with it, when the target has finished.
  _drag = new QDrag(&source);
  _drag->setMimeData(new PromisedFileData(_promise, _extraction, _arrival));
  _drag->setPixmap(picture);
  _drag->setHotSpot(hotSpot);
  _drag->exec(Qt::CopyAction);
}

}  // namespace quennel
