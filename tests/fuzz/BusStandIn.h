#pragma once

#include <systemd/sd-bus.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/base/FileDescriptor.h"
#include "platform/linux/bus/BusDistributedNotificationCenter.h"
#include "platform/linux/bus/BusURLEvents.h"
#include "platform/linux/bus/SessionBus.h"
#include "platform/linux/events/EventRunLoop.h"

namespace quennel::test {

/// A session in one process: the helper's side of the bus, and a bus that grants it its name and
/// then passes on to it whatever bytes the test makes up. Both are served by one run loop.
class BusStandIn {
 public:
  BusStandIn();
  BusStandIn(const BusStandIn&) = delete;
  BusStandIn& operator=(const BusStandIn&) = delete;
  ~BusStandIn();

  bool isOpen() const { return _bus->isOpen(); }

  /// Sends the bytes and returns when the helper has dealt with them, and with what it queued.
  void pass(const std::string& bytes);

  /// What came back for the message of this number since it was passed.
  int countAnswersTo(std::uint32_t serial) const;

  /// What reached the helper, in order.
  std::vector<URLEvent> opened;
  std::vector<Notification> posted;

 private:
  struct CloseBus {
    void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
  };

  static int receive(sd_bus_message* message, void* self, sd_bus_error* error);
  FileDescriptor listen();
  void accept(const FileDescriptor& listening);

  EventRunLoop _runLoop;
  std::string _address;
  std::unique_ptr<sd_bus, CloseBus> _daemon;
  std::unique_ptr<SessionBus> _bus;
  std::unique_ptr<BusURLEvents> _urlEvents;
  std::unique_ptr<BusDistributedNotificationCenter> _center;
  std::vector<std::unique_ptr<Registration>> _registrations;
  std::vector<std::uint64_t> _answered;
};

}  // namespace quennel::test
