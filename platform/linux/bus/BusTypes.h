#pragma once

#include <systemd/sd-bus.h>

#include <memory>
#include <string_view>

namespace quennel {

struct UnrefBusMessage {
  void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using BusMessage = std::unique_ptr<sd_bus_message, UnrefBusMessage>;

/// Owns an object, a match or a pending call; letting go of it ends its callbacks.
struct UnrefBusSlot {
  void operator()(sd_bus_slot* slot) const { sd_bus_slot_unref(slot); }
};
using BusSlot = std::unique_ptr<sd_bus_slot, UnrefBusSlot>;

/// What a call answered instead of a reply.
class BusError {
 public:
  BusError() = default;
  BusError(const BusError&) = delete;
  BusError& operator=(const BusError&) = delete;
  ~BusError() { sd_bus_error_free(&_error); }

  sd_bus_error* get() { return &_error; }
  bool hasName(const char* name) const { return sd_bus_error_has_name(&_error, name) > 0; }
  bool nameStartsWith(std::string_view start) const {
    return _error.name && std::string_view(_error.name).starts_with(start);
  }

 private:
  sd_bus_error _error = SD_BUS_ERROR_NULL;
};

}  // namespace quennel
