#pragma once

#include <QtCore/QMimeData>
#include <memory>

#include "platform/qt/FilePromise.h"

namespace quennel {

class ArrivalWatch;
class ExtractionService;
class XdndSource;

/// What a drag of a promised file offers: on X11 to save it (XdndDirectSave0), to file managers of
/// KDE to extract it, and to all others the file that it is a copy of.
class PromisedFileData : public QMimeData {
 public:
  /// `extraction` may be null; `arrival` is started when somebody takes the file itself.
  PromisedFileData(std::shared_ptr<const FilePromise> promise,
                   std::shared_ptr<ExtractionService> extraction,
                   std::shared_ptr<ArrivalWatch> arrival);
  ~PromisedFileData() override;

  QStringList formats() const override;
  bool hasFormat(const QString& format) const override;

 protected:
  QVariant retrieveData(const QString& format, QMetaType type) const override;

 private:
  QByteArray save() const;
  QByteArray fileList() const;

  std::shared_ptr<const FilePromise> _promise;
  std::shared_ptr<ExtractionService> _extraction;
  std::shared_ptr<ArrivalWatch> _arrival;
  /// Null where there is no X11.
  std::unique_ptr<XdndSource> _xdnd;
  /// What the target that saves was told; it may ask again.
  mutable QByteArray _saved;
};

}  // namespace quennel
