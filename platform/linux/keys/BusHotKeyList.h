#pragma once

#include <vector>

#include "platform/linux/bus/BusTypes.h"
#include "platform/linux/bus/SessionBus.h"
#include "platform/linux/keys/DesktopHotKeyCenter.h"

namespace quennel {

class Bundle;

/// Tells on the session bus which keys work and why others do not: the method `List` answers, for
/// every key that was registered, its identifier, whether it works, and the reason if it does not.
/// Calls that come before the keys are registered wait for them.
class BusHotKeyList {
 public:
  static constexpr auto interfaceName = "net.brellow.QuennelHelper.HotKeys";

  /// The bus is not owned. Make it before the helper's name is claimed, or calls that the bus kept
  /// for a helper that is starting are refused. Without a bus there is nobody to tell.
  explicit BusHotKeyList(SessionBus& bus);
  BusHotKeyList(const BusHotKeyList&) = delete;
  BusHotKeyList& operator=(const BusHotKeyList&) = delete;

  /// Tells from now on of the keys of `center`, in the words of `texts`. Neither is owned; both
  /// outlive the run loop's run.
  void setCenter(const DesktopHotKeyCenter& center, const Bundle& texts);

 private:
  static int list(sd_bus_message* message, void* self, sd_bus_error* error);
  static const sd_bus_vtable methods[];

  void answerCalls();
  void answer(sd_bus_message* call) const;

  SessionBus& _bus;
  const DesktopHotKeyCenter* _center = nullptr;
  const Bundle* _texts = nullptr;
  std::vector<BusMessage> _calls;
  BusSlot _object;
};

}  // namespace quennel
