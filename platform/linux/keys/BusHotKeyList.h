#pragma once

#include "platform/linux/bus/SessionBus.h"
#include "platform/linux/keys/DesktopHotKeyCenter.h"

namespace quennel {

/// Tells on the session bus which keys work and why others do not: the method `List` answers, for
/// every key that was registered, its identifier, whether it works, and the reason if it does not.
class BusHotKeyList {
 public:
  static constexpr auto interfaceName = "net.brellow.QuennelHelper.HotKeys";

  /// Both are not owned. Without a bus there is nobody to tell.
  BusHotKeyList(SessionBus& bus, const DesktopHotKeyCenter& center);
  BusHotKeyList(const BusHotKeyList&) = delete;
  BusHotKeyList& operator=(const BusHotKeyList&) = delete;

 private:
  static int list(sd_bus_message* message, void* self, sd_bus_error* error);
  static const sd_bus_vtable methods[];

  void answer(sd_bus_message* call) const;

  SessionBus& _bus;
  const DesktopHotKeyCenter& _center;
  BusSlot _object;
};

}  // namespace quennel
