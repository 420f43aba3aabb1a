#pragma once

#include <QtCore/QPointer>
#include <QtGui/QDrag>
#include <memory>
#include <string>

#include "platform/qt/FilePromise.h"

class QPixmap;
class QPoint;
class QWidget;

namespace quennel {

class ArrivalWatch;
class ExtractionService;

/// A drag of a file that is written where it is dropped. Kept until the file has arrived: that may
/// be after the drag has ended.
class PromisedFileDrag {
 public:
  /// Where a drop target takes a finished file and says nothing, the file is expected in the folder
  /// `destination`.
  PromisedFileDrag(FilePromise promise, const std::string& destination);
  PromisedFileDrag(const PromisedFileDrag&) = delete;
  PromisedFileDrag& operator=(const PromisedFileDrag&) = delete;
  ~PromisedFileDrag();

  /// Drags until the user lets go. `hotSpot` is where the picture hangs at the pointer.
  void run(QWidget& source, const QPixmap& picture, QPoint hotSpot);

  /// Whether the drop target may still ask for something.
  bool isUnderWay() const { return !_drag.isNull(); }

 private:
  std::shared_ptr<const FilePromise> _promise;
  std::shared_ptr<ArrivalWatch> _arrival;
  std::shared_ptr<ExtractionService> _extraction;
  QPointer<QDrag> _drag;
};

}  // namespace quennel
