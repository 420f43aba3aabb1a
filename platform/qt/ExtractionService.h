#pragma once

#include <systemd/sd-bus.h>

#include <QtCore/QByteArray>
#include <QtCore/QSocketNotifier>
#include <memory>
#include <string>

#include "platform/linux/filemanagers/ExtractionObject.h"
#include "platform/qt/FilePromise.h"

namespace quennel {

/// An `ExtractionObject` on a bus connection of its own, served by the toolkit's loop: writes a
/// promised file to the folder that it is told.
class ExtractionService {
 public:
  /// Null without a session bus.
  static std::shared_ptr<ExtractionService> create(std::shared_ptr<const FilePromise> promise);
  ExtractionService(const ExtractionService&) = delete;
  ExtractionService& operator=(const ExtractionService&) = delete;

  /// From when a target asks for the file until the drag is over; all other calls are refused:
  /// anybody on the bus can call.
  void beginAnswering() { _isAnswering = true; }
  void endAnswering() { _isAnswering = false; }

  QByteArray busName() const;

 private:
  struct Close {
    void operator()(sd_bus* bus) const { sd_bus_flush_close_unref(bus); }
  };

  ExtractionService(sd_bus* bus, std::shared_ptr<const FilePromise> promise);

  bool publish();
  void process();
  int extractTo(const std::string& folder) const;

  std::unique_ptr<sd_bus, Close> _bus;
  std::shared_ptr<const FilePromise> _promise;
  std::unique_ptr<ExtractionObject> _object;
  std::unique_ptr<QSocketNotifier> _notifier;
  bool _isAnswering = false;
};

}  // namespace quennel
