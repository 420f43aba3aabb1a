#pragma once

#include <QtCore/QTimer>
#include <memory>
#include <optional>
#include <string>

#include "platform/qt/FileIdentity.h"
#include "platform/qt/FilePromise.h"

namespace quennel {

/// Waits for a file that others copy: a drop target that takes a finished file does not say where
/// to it goes, so it is looked for in the one folder that it should go to.
class ArrivalWatch {
 public:
  /// A file that is in the folder now does not count.
  ArrivalWatch(std::shared_ptr<const FilePromise> promise, std::string folder);

  void start();

 private:
  void look();

  std::shared_ptr<const FilePromise> _promise;
  std::string _folder;
  std::string _path;
  std::optional<FileIdentity> _before;
  QTimer _timer;
};

}  // namespace quennel
