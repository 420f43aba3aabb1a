#include "platform/linux/helper/BusHelperConnection.h"

#include <cstdlib>
#include <system_error>
#include <type_traits>
#include <utility>

#include "platform/linux/bus/BusDistributedNotificationCenter.h"
#include "platform/linux/bus/BusTypes.h"
#include "platform/linux/bus/BusURLEvents.h"
#include "platform/linux/bus/SessionBus.h"
#include "platform/linux/events/EventRunLoop.h"
#include "platform/linux/keys/BusHotKeyList.h"

namespace quennel {
namespace {

using Reason = HelperSilence::Reason;

/// How a conversation stops; does not leave this file.
[[noreturn]] void stop(Reason reason, std::string detail = {}) {
  throw HelperSilence{reason, std::move(detail)};
}

void check(int result) {
  if (result < 0) {
    stop(Reason::UnsendableQuestion, std::generic_category().message(-result));
  }
}

void checkRead(int result) {
  if (result < 0) {
    stop(Reason::UnreadableAnswer);
  }
}

/// What `conversation` answers, or where it stopped.
template <class Value, class Conversation>
Result<Value, HelperSilence> having(const Conversation& conversation) {
  try {
    if constexpr (std::is_void_v<Value>) {
      conversation();
      return {};
    } else {
      return conversation();
    }
  } catch (const HelperSilence& silence) {
    return silence;
  }
}

class Connection {
 public:
  Connection() : _bus(_runLoop) {
    if (!_bus.isOpen()) {
      stop(Reason::NoSession);
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
      stop(_runLoop.isTerminating() ? Reason::Interrupted : Reason::SessionDoesNotAnswer);
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

bool isHelperMissing(const BusMessage& answer) {
  return isError(answer, SD_BUS_ERROR_SERVICE_UNKNOWN) ||
         isError(answer, SD_BUS_ERROR_NAME_HAS_NO_OWNER);
}

void checkAnswer(const BusMessage& answer) {
  if (isHelperMissing(answer)) {
    stop(Reason::NotInstalled);
  }
  if (isError(answer, nullptr)) {
    stop(Reason::Refused, errorText(answer));
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

void openURL(const std::string& url) {
  Connection connection;
  const BusMessage call = connection.makeCall(BusURLEvents::busName, BusURLEvents::objectPath,
                                              BusURLEvents::interfaceName, "Open");
  check(sd_bus_message_append(call.get(), "as", 1, url.c_str()));
  appendActivationTokens(call);
  checkAnswer(connection.answerTo(call));
}

bool postCommand(const std::string& command) {
  Connection connection;
  const bool isRunning = isHelperRunning(connection);
  BusDistributedNotificationCenter center(connection.bus());
  center.postNotification({BusURLEvents::busName, command, {}}, true);
  return isRunning;
}

bool performAction(const std::string& action) {
  Connection connection;
  const BusMessage call = connection.makeCall(BusURLEvents::busName, BusURLEvents::objectPath,
                                              BusURLEvents::interfaceName, "ActivateAction");
  check(sd_bus_message_set_auto_start(call.get(), 0));
  check(sd_bus_message_append(call.get(), "sava{sv}", action.c_str(), 0, 0));
  const BusMessage answer = connection.answerTo(call);
  // The bus answers "no reply" for one that left with the question.
  if (isHelperMissing(answer) || isError(answer, SD_BUS_ERROR_NO_REPLY)) {
    return false;
  }
  checkAnswer(answer);
  return true;
}

std::vector<HelperKey> askForKeys() {
  Connection connection;
  const BusMessage call = connection.makeCall(BusURLEvents::busName, BusURLEvents::objectPath,
                                              BusHotKeyList::interfaceName, "List");
  const BusMessage answer = connection.answerTo(call);
  checkAnswer(answer);
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

}  // namespace

Result<void, HelperSilence> BusHelperConnection::open(const std::string& url) {
  return having<void>([&] { openURL(url); });
}

Result<bool, HelperSilence> BusHelperConnection::notify(const std::string& command) {
  return having<bool>([&] { return postCommand(command); });
}

Result<bool, HelperSilence> BusHelperConnection::perform(const std::string& action) {
  auto performed = having<bool>([&] { return performAction(action); });
  const bool isAlone = !performed && performed.failure().reason == Reason::NoSession;
  return isAlone ? Result<bool, HelperSilence>(false) : performed;
}

Result<std::vector<HelperKey>, HelperSilence> BusHelperConnection::keys() {
  return having<std::vector<HelperKey>>(askForKeys);
}

}  // namespace quennel
