#include "ctl/BusHelperConnection.h"

#include <cstdlib>

#include "ctl/CommandError.h"
#include "platform/linux/bus/BusDistributedNotificationCenter.h"
#include "platform/linux/bus/BusTypes.h"
#include "platform/linux/bus/BusURLEvents.h"
#include "platform/linux/bus/SessionBus.h"
#include "platform/linux/events/EventRunLoop.h"
#include "platform/linux/keys/BusHotKeyList.h"
#include "platform/linux/locale/UserLocale.h"

namespace quennel {
namespace {

void check(int result) {
  if (result < 0) {
    throw CommandFailure("the message cannot be made: " + UserLocale::errorDescription(-result));
  }
}

void checkRead(int result) {
  if (result < 0) {
    throw CommandFailure("the helper's answer cannot be read");
  }
}

class Connection {
 public:
  Connection() : _bus(_runLoop) {
    if (!_bus.isOpen()) {
      throw CommandFailure("there is no session bus");
    }
  }

  SessionBus& bus() { return _bus; }

  BusMessage makeCall(const char* destination, const char* path, const char* interface,
                      const char* member) {
    sd_bus_message* call = nullptr;
    check(sd_bus_message_new_method_call(_bus.connection(), &call, destination, path, interface,
                                         member));
    return BusMessage(call);
  }

  /// The answer, which may be an error message.
  BusMessage answerTo(const BusMessage& call) {
    BusMessage answer = _bus.call(call.get());
    if (!answer) {
      throw CommandFailure(_runLoop.isTerminating() ? "interrupted"
                                                    : "the session bus does not answer");
    }
    return answer;
  }

 private:
  EventRunLoop _runLoop;
  SessionBus _bus;
};

bool isError(const BusMessage& answer, const char* name) {
  return sd_bus_message_is_method_error(answer.get(), name) > 0;
}

std::string errorText(const BusMessage& answer) {
  const sd_bus_error* error = sd_bus_message_get_error(answer.get());
  return error && error->message ? error->message : "no reason was given";
}

void append(const BusMessage& call, const char* key, const char* variable) {
  if (const char* value = std::getenv(variable)) {
    check(sd_bus_message_append(call.get(), "{sv}", key, "s", value));
  }
}

/// By these the desktop lets the helper's window come to the front: the terminal's user asked for
/// it.
void appendActivationTokens(const BusMessage& call) {
  check(sd_bus_message_open_container(call.get(), 'a', "{sv}"));
  append(call, "activation-token", "XDG_ACTIVATION_TOKEN");
  append(call, "desktop-startup-id", "DESKTOP_STARTUP_ID");
  check(sd_bus_message_close_container(call.get()));
}

void checkThatHelperIsThere(const BusMessage& answer) {
  if (isError(answer, SD_BUS_ERROR_SERVICE_UNKNOWN) ||
      isError(answer, SD_BUS_ERROR_NAME_HAS_NO_OWNER)) {
    throw CommandFailure(
        "the helper is not running and the session bus does not know how to start it");
  }
}

bool isHelperRunning(Connection& connection) {
  const BusMessage call = connection.makeCall("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                              "org.freedesktop.DBus", "NameHasOwner");
  check(sd_bus_message_append(call.get(), "s", BusURLEvents::busName));
  const BusMessage answer = connection.answerTo(call);
  int hasOwner = 0;
  return sd_bus_message_read(answer.get(), "b", &hasOwner) > 0 && hasOwner != 0;
}

}  // namespace

void BusHelperConnection::open(const std::string& url) {
  Connection connection;
  const BusMessage call = connection.makeCall(BusURLEvents::busName, BusURLEvents::objectPath,
                                              BusURLEvents::interfaceName, "Open");
  check(sd_bus_message_append(call.get(), "as", 1, url.c_str()));
  appendActivationTokens(call);
  const BusMessage answer = connection.answerTo(call);
  checkThatHelperIsThere(answer);
  if (isError(answer, nullptr)) {
    throw CommandFailure("the helper did not take the request: " + errorText(answer));
  }
}

bool BusHelperConnection::notify(const std::string& command) {
  Connection connection;
  const bool isRunning = isHelperRunning(connection);
  BusDistributedNotificationCenter center(connection.bus());
  center.postNotification({BusURLEvents::busName, command, {}}, true);
  return isRunning;
}

std::vector<HelperKey> BusHelperConnection::keys() {
  Connection connection;
  const BusMessage call = connection.makeCall(BusURLEvents::busName, BusURLEvents::objectPath,
                                              BusHotKeyList::interfaceName, "List");
  const BusMessage answer = connection.answerTo(call);
  checkThatHelperIsThere(answer);
  if (isError(answer, nullptr)) {
    throw CommandFailure("the helper does not say: " + errorText(answer));
  }
  std::vector<HelperKey> keys;
  checkRead(sd_bus_message_enter_container(answer.get(), SD_BUS_TYPE_ARRAY, "(sbs)"));
  const char* identifier = nullptr;
  const char* reason = nullptr;
  int isBound = 0;
  while (sd_bus_message_read(answer.get(), "(sbs)", &identifier, &isBound, &reason) > 0) {
    keys.push_back({identifier, isBound != 0, reason});
  }
  return keys;
}

}  // namespace quennel
