#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/linux/bus/BusTypes.h"
#include "platform/linux/bus/SessionBus.h"

namespace quennel::test {

/// A file manager on the bus that takes note of what it is to show, or refuses.
class FileManagerStandIn {
 public:
  enum class Answer { Shown, Refused };

  FileManagerStandIn(EventRunLoop& runLoop, const std::string& address, Answer answer)
      : _bus(runLoop, address), _answer(answer) {
    static const sd_bus_vtable methods[] = {
        SD_BUS_VTABLE_START(0),
        SD_BUS_METHOD("ShowItems", "ass", "", showItems, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_VTABLE_END};
    sd_bus_slot* slot = nullptr;
    EXPECT_GE(sd_bus_add_object_vtable(_bus.connection(), &slot, "/org/freedesktop/FileManager1",
                                       "org.freedesktop.FileManager1", methods, this),
              0);
    _object.reset(slot);
    EXPECT_GE(sd_bus_request_name(_bus.connection(), "org.freedesktop.FileManager1", 0), 0);
  }

  /// The URIs of each call.
  std::vector<std::vector<std::string>> shown;

 private:
  static int showItems(sd_bus_message* call, void* self, sd_bus_error* error) {
    auto& standIn = *static_cast<FileManagerStandIn*>(self);
    standIn.shown.emplace_back();
    sd_bus_message_enter_container(call, SD_BUS_TYPE_ARRAY, "s");
    for (const char* uri = nullptr; sd_bus_message_read(call, "s", &uri) > 0;) {
      standIn.shown.back().emplace_back(uri);
    }
    if (standIn._answer == Answer::Refused) {
      return sd_bus_error_set(error, "org.example.Refused", "not now");
    }
    return sd_bus_reply_method_return(call, "");
  }

  SessionBus _bus;
  Answer _answer;
  BusSlot _object;
};

}  // namespace quennel::test
