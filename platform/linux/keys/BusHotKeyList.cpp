#include "platform/linux/keys/BusHotKeyList.h"

#include <string>
#include <utility>

#include "platform/Bundle.h"
#include "platform/linux/bus/BusURLEvents.h"

namespace quennel {

namespace {

int append(sd_bus_message* reply, const std::string& identifier, bool isBound,
           const std::string& reason) {
  return sd_bus_message_append(reply, "(sbs)", identifier.c_str(), isBound ? 1 : 0, reason.c_str());
}

int appendKeys(sd_bus_message* reply, const DesktopHotKeyCenter& center, const Bundle& texts) {
  int result = 0;
  for (const auto& hotKey : center.allHotKeys()) {
    result = result < 0 ? result : append(reply, hotKey->identifier(), true, "");
  }
  for (const auto& [identifier, error] : center.refusals()) {
    result =
        result < 0 ? result : append(reply, identifier, false, error.localizedDescription(texts));
  }
  return result;
}

}  // namespace

const sd_bus_vtable BusHotKeyList::methods[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD_WITH_NAMES("List", "", , "a(sbs)", SD_BUS_PARAM(keys), list,
                             SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END};

BusHotKeyList::BusHotKeyList(SessionBus& bus) : _bus(bus) {
  sd_bus_slot* slot = nullptr;
  if (_bus.isOpen() && sd_bus_add_object_vtable(_bus.connection(), &slot, BusURLEvents::objectPath,
                                                interfaceName, methods, this) >= 0) {
    _object.reset(slot);
  }
}

/// The answer waits its turn in the main queue, behind commands that came before the question and
/// may change it.
int BusHotKeyList::list(sd_bus_message* message, void* self, sd_bus_error*) {
  auto* const keys = static_cast<BusHotKeyList*>(self);
  keys->_calls.emplace_back(sd_bus_message_ref(message));
  keys->_bus.runLoop().dispatchAsync([keys] { keys->answerCalls(); });
  return 1;
}

void BusHotKeyList::setCenter(const DesktopHotKeyCenter& center, const Bundle& texts) {
  _center = &center;
  _texts = &texts;
  answerCalls();
}

void BusHotKeyList::answerCalls() {
  if (_center) {
    for (const BusMessage& call : std::exchange(_calls, {})) {
      answer(call.get());
    }
  }
}

/// A call that cannot be answered ends by its own time limit.
void BusHotKeyList::answer(sd_bus_message* call) const {
  sd_bus_message* message = nullptr;
  if (sd_bus_message_new_method_return(call, &message) < 0) {
    return;
  }
  const BusMessage reply(message);
  if (sd_bus_message_open_container(message, SD_BUS_TYPE_ARRAY, "(sbs)") >= 0 &&
      appendKeys(message, *_center, *_texts) >= 0 && sd_bus_message_close_container(message) >= 0) {
    static_cast<void>(sd_bus_send(_bus.connection(), message, nullptr));
  }
}

}  // namespace quennel
