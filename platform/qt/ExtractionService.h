#pragma once

#include <systemd/sd-bus.h>

#include <QtCore/QByteArray>
#include <QtCore/QSocketNotifier>
#include <memory>

#include "platform/qt/FilePromise.h"

namespace quennel {

/// An object on the session bus that writes a promised file to the folder that it is told, as
/// archive programs of KDE have it for files that are dragged out of an archive.
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
  QByteArray objectPath() const;

 private:
  struct Close {
    void operator()(sd_bus* bus) const { sd_bus_flush_close_unref(bus); }
  };
  struct Unref {
    void operator()(sd_bus_slot* slot) const { sd_bus_slot_unref(slot); }
  };
  static const sd_bus_vtable methods[];

  ExtractionService(sd_bus* bus, std::shared_ptr<const FilePromise> promise);

  bool publish();
  void process();
  static int extractSelectedFilesTo(sd_bus_message* message, void* self, sd_bus_error* error);

  std::unique_ptr<sd_bus, Close> _bus;
  std::unique_ptr<sd_bus_slot, Unref> _object;
  std::shared_ptr<const FilePromise> _promise;
  std::unique_ptr<QSocketNotifier> _notifier;
  bool _isAnswering = false;
};

}  // namespace quennel
