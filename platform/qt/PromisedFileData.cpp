#include "platform/qt/PromisedFileData.h"

#include <QtCore/QFile>
#include <QtCore/QSysInfo>
#include <QtCore/QUrl>
#include <utility>

#include "platform/linux/filemanagers/DropType.h"
#include "platform/qt/ArrivalWatch.h"
#include "platform/qt/DropTargets.h"
#include "platform/qt/ExtractionService.h"
#include "platform/qt/XdndSource.h"
#include "platform/values/Path.h"

namespace quennel {
namespace {

/// The path of a file on this machine; empty for all else.
std::string localPath(const QByteArray& uri) {
  QUrl url = QUrl::fromEncoded(uri);
  if (url.host() == QSysInfo::machineHostName() || url.host() == "localhost") {
    url.setHost(QString());
  }
  return url.isLocalFile() ? QFile::encodeName(url.toLocalFile()).toStdString() : std::string();
}

}  // namespace

PromisedFileData::PromisedFileData(std::shared_ptr<const FilePromise> promise,
                                   std::shared_ptr<ExtractionService> extraction,
                                   std::shared_ptr<ArrivalWatch> arrival)
    : _promise(std::move(promise)),
      _extraction(std::move(extraction)),
      _arrival(std::move(arrival)),
      _xdnd(XdndSource::create(*this, QByteArray::fromStdString(_promise->name()))) {}

/// The toolkit deletes the data when the target has finished.
PromisedFileData::~PromisedFileData() {
  if (_extraction) {
    _extraction->endAnswering();
  }
}

QStringList PromisedFileData::formats() const {
  if (_xdnd) {
    // The toolkit asks as soon as the drag has its window.
    _xdnd->nameFile();
  }
  QStringList formats{drop_type::fileList};
  if (_extraction) {
    formats << drop_type::extractionService << drop_type::extractionPath;
  }
  if (_xdnd) {
    formats << drop_type::directSave;
  }
  return formats;
}

bool PromisedFileData::hasFormat(const QString& format) const { return formats().contains(format); }

QVariant PromisedFileData::retrieveData(const QString& format, QMetaType) const {
  if (format == drop_type::directSave) {
    return save();
  }
  if (format == drop_type::fileList) {
    return fileList();
  }
  if (_extraction && format == drop_type::extractionService) {
    return _extraction->busName();
  }
  if (_extraction && format == drop_type::extractionPath) {
    // A target reads this when it has been dropped on, and calls then.
    _extraction->beginAnswering();
    return QByteArray(ExtractionObject::path);
  }
  return {};
}

/// "S" for success, "F" for failure; "E" while the target has not said where.
QByteArray PromisedFileData::save() const {
  if (!_saved.isEmpty()) {
    return _saved;
  }
  const std::string path = _xdnd ? localPath(_xdnd->whereToSave()) : std::string();
  if (path.empty()) {
    return "E";
  }
  _saved = _promise->keep(deletingLastPathComponent(path)) ? "S" : "F";
  return _saved;
}

QByteArray PromisedFileData::fileList() const {
  _arrival->start();
  return QUrl::fromLocalFile(QFile::decodeName(_promise->path().c_str())).toEncoded() + "\r\n";
}

}  // namespace quennel
