#include "platform/linux/bus/HandOver.h"

#include <memory>

#include "platform/linux/bus/BusTypes.h"
#include "platform/linux/bus/OpenCall.h"

namespace quennel {

namespace {

struct CloseBus {
  void operator()(sd_bus* bus) const { sd_bus_flush_close_unref(bus); }
};
using Connection = std::unique_ptr<sd_bus, CloseBus>;

Connection openSessionBus() {
  sd_bus* bus = nullptr;
  return Connection(sd_bus_open_user(&bus) < 0 ? nullptr : bus);
}

/// The bus found no owner of the name and could not start one.
bool isMissing(const BusError& error) {
  constexpr auto spawnErrors = "org.freedesktop.DBus.Error.Spawn.";
  return error.hasName(SD_BUS_ERROR_SERVICE_UNKNOWN) ||
         error.hasName(SD_BUS_ERROR_NAME_HAS_NO_OWNER) || error.nameStartsWith(spawnErrors);
}

}  // namespace

HandOver handOverToHelper(const std::vector<std::string>& urls) {
  const auto bus = openSessionBus();
  if (!bus) {
    return HandOver::NobodyThere;
  }
  // A helper that ends before it answers has not handled anything: the next one is asked.
  for (int attempt = 0; attempt < 5; ++attempt) {
    const auto call = newOpenCall(bus.get(), urls, launchToken());
    BusError error;
    if (!call) {
      return HandOver::Failed;
    }
    if (sd_bus_call(bus.get(), call.get(), 0, error.get(), nullptr) >= 0) {
      return HandOver::Accepted;
    }
    if (isMissing(error)) {
      return HandOver::NobodyThere;
    }
    if (!error.hasName(SD_BUS_ERROR_NO_REPLY)) {
      return HandOver::Failed;
    }
  }
  return HandOver::Failed;
}

}  // namespace quennel
