#include "platform/qt/ArrivalWatch.h"

#include <QtCore/QFile>
#include <QtCore/QObject>
#include <chrono>
#include <utility>

#include "platform/values/Path.h"

namespace quennel {
namespace {

bool haveSameContents(const std::string& path, const std::string& otherPath) {
  QFile file(QFile::decodeName(path.c_str()));
  QFile other(QFile::decodeName(otherPath.c_str()));
  return file.open(QIODevice::ReadOnly) && other.open(QIODevice::ReadOnly) &&
         file.size() == other.size() && file.readAll() == other.readAll();
}

}  // namespace

ArrivalWatch::ArrivalWatch(std::shared_ptr<const FilePromise> promise, std::string folder)
    : _promise(std::move(promise)),
      _folder(std::move(folder)),
      _path(appendingPathComponent(_folder, _promise->name())),
      _before(identityOfFile(_path)) {
  QObject::connect(&_timer, &QTimer::timeout, &_timer, [this] { look(); });
}

void ArrivalWatch::start() {
  if (!_folder.empty()) {
    _timer.start(std::chrono::milliseconds(100));
  }
}

void ArrivalWatch::look() {
  const auto now = identityOfFile(_path);
  if (now && now != _before && haveSameContents(_path, _promise->path())) {
    _timer.stop();
    // Writes it again, with everything that belongs to a promise that is kept.
    _promise->keep(_folder);
  }
}

}  // namespace quennel
