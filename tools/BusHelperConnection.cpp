#include "tools/BusHelperConnection.h"

#include <systemd/sd-bus.h>

#include <cstdlib>
#include <memory>

#include "platform/linux/locale/UserLocale.h"
#include "tools/CommandError.h"

namespace quennel {
namespace {

constexpr auto helperName = "net.brellow.QuennelHelper";
constexpr auto helperPath = "/net/brellow/QuennelHelper";

struct CloseBus {
  void operator()(sd_bus* bus) const { sd_bus_flush_close_unref(bus); }
};
using Bus = std::unique_ptr<sd_bus, CloseBus>;

struct UnrefMessage {
  void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using Message = std::unique_ptr<sd_bus_message, UnrefMessage>;

class BusError {
 public:
  BusError() = default;
  BusError(const BusError&) = delete;
  BusError& operator=(const BusError&) = delete;
  ~BusError() { sd_bus_error_free(&_error); }

  sd_bus_error* get() { return &_error; }
  std::string message() const { return _error.message ? _error.message : ""; }
  bool isOfNobodyThere() const {
    return sd_bus_error_has_name(&_error, SD_BUS_ERROR_SERVICE_UNKNOWN) > 0 ||
           sd_bus_error_has_name(&_error, SD_BUS_ERROR_NAME_HAS_NO_OWNER) > 0;
  }

 private:
  sd_bus_error _error = SD_BUS_ERROR_NULL;
};

void check(int result, const std::string& what) {
  if (result < 0) {
    throw CommandFailure(what + ": " + UserLocale::errorDescription(-result));
  }
}

Bus connected() {
  sd_bus* bus = nullptr;
  check(sd_bus_open_user(&bus), "there is no session bus");
  return Bus(bus);
}

/// By this token the desktop lets the helper's window come to the front, as the terminal's user
/// asked for it.
void appendActivationToken(sd_bus_message* call) {
  check(sd_bus_message_open_container(call, 'a', "{sv}"), "the request cannot be made");
  if (const char* token = std::getenv("XDG_ACTIVATION_TOKEN")) {
    check(sd_bus_message_append(call, "{sv}", "activation-token", "s", token), "activation token");
  }
  if (const char* token = std::getenv("DESKTOP_STARTUP_ID")) {
    check(sd_bus_message_append(call, "{sv}", "desktop-startup-id", "s", token), "start-up id");
  }
  check(sd_bus_message_close_container(call), "the request cannot be made");
}

bool isHelperRunning(sd_bus* bus) {
  BusError error;
  sd_bus_message* answer = nullptr;
  const int result = sd_bus_call_method(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                        "org.freedesktop.DBus", "NameHasOwner", error.get(),
                                        &answer, "s", helperName);
  const Message owned(answer);
  check(result, "the session bus does not answer");
  int hasOwner = 0;
  check(sd_bus_message_read(answer, "b", &hasOwner), "the session bus does not answer");
  return hasOwner != 0;
}

}  // namespace

void BusHelperConnection::open(const std::string& url) {
  const Bus bus = connected();
  sd_bus_message* call = nullptr;
  check(sd_bus_message_new_method_call(bus.get(), &call, helperName, helperPath,
                                       "org.freedesktop.Application", "Open"),
        "the request cannot be made");
  const Message owned(call);
  check(sd_bus_message_append(call, "as", 1, url.c_str()), "the request cannot be made");
  appendActivationToken(call);
  BusError error;
  const int result = sd_bus_call(bus.get(), call, 0, error.get(), nullptr);
  if (result >= 0) {
    return;
  }
  if (error.isOfNobodyThere()) {
    throw CommandFailure(
        "the helper is not running and the session bus does not know how to start it");
  }
  throw CommandFailure("the helper did not take the request: " + error.message());
}

bool BusHelperConnection::notify(const std::string& command) {
  const Bus bus = connected();
  const bool isRunning = isHelperRunning(bus.get());
  check(sd_bus_emit_signal(bus.get(), "/net/brellow/DistributedNotificationCenter",
                           "net.brellow.DistributedNotificationCenter", "Posted", "ssa{sv}",
                           helperName, command.c_str(), 0),
        "the command cannot be sent");
  return isRunning;
}

}  // namespace quennel
