#include "platform/linux/bus/BusURLEvents.h"

#include <cstdint>
#include <iterator>
#include <utility>

#include "platform/linux/bus/BusPropertyList.h"
#include "platform/linux/bus/OpenCall.h"
#include "platform/values/URL.h"

namespace quennel {

namespace {

constexpr auto startupIdKey = "desktop-startup-id";

// Of the answers to RequestName.
constexpr std::uint32_t primaryOwner = 1;
constexpr std::uint32_t alreadyOwner = 4;

std::string textForKey(const PropertyList::Dictionary& dictionary, const char* key) {
  const auto entry = dictionary.find(key);
  const auto* const text = entry == dictionary.end() ? nullptr : entry->second.string();
  return text ? *text : std::string();
}

std::string activationToken(const PropertyList::Dictionary& platformData) {
  const auto token = textForKey(platformData, activationTokenKey);
  return token.empty() ? textForKey(platformData, startupIdKey) : token;
}

bool isAnsweredForMissingOwner(sd_bus_message* answer) {
  return sd_bus_message_is_method_error(answer, SD_BUS_ERROR_NAME_HAS_NO_OWNER) > 0 ||
         sd_bus_message_is_method_error(answer, SD_BUS_ERROR_SERVICE_UNKNOWN) > 0 ||
         sd_bus_message_is_method_error(answer, SD_BUS_ERROR_NO_REPLY) > 0;
}

}  // namespace

class BusURLEvents::HandlerRegistration final : public Registration {
 public:
  explicit HandlerRegistration(BusURLEvents& events) : _events(events) {
    _events._registration = this;
  }
  HandlerRegistration(const HandlerRegistration&) = delete;
  HandlerRegistration& operator=(const HandlerRegistration&) = delete;
  ~HandlerRegistration() override {
    if (_events._registration == this) {
      _events._registration = nullptr;
      _events._handler = nullptr;
    }
  }

 private:
  BusURLEvents& _events;
};

// The flag spares the question, which needs the bus, whether the sender is privileged: the bus lets
// only the user's own programs in.
const sd_bus_vtable BusURLEvents::methods[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD_WITH_NAMES("Activate", "a{sv}", SD_BUS_PARAM(platform_data), "", , activate,
                             SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_NAMES("Open", "asa{sv}", SD_BUS_PARAM(uris) SD_BUS_PARAM(platform_data), "",
                             , open, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_NAMES("ActivateAction", "sava{sv}",
                             SD_BUS_PARAM(action_name) SD_BUS_PARAM(parameter)
                                 SD_BUS_PARAM(platform_data),
                             "", , activateAction, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END};

BusURLEvents::Role BusURLEvents::claim(const std::vector<std::string>& urls) {
  const auto token = launchToken();
  forgetLaunchToken();
  auto granted = publish() ? Answer::No : Answer::Failed;
  while (granted == Answer::No) {
    granted = requestName();
    if (granted == Answer::No) {
      const auto accepted = handOver(urls, token);
      if (accepted == Answer::Yes) {
        return Role::HandedOver;
      }
      // The owner left between the two calls: perhaps the name is free now.
      granted = accepted;
    }
  }
  if (_bus.runLoop().isTerminating()) {
    _ownsName = _bus.isOpen();  // for all we know: the answer may be on its way
    keepOwn(urls, token);
    release();
    return Role::Terminated;
  }
  _ownsName = granted == Answer::Yes;
  keepOwn(urls, token);
  return _ownsName ? Role::Helper : Role::Alone;
}

/// The URLs of the command line come before those that the bus brought meanwhile.
void BusURLEvents::keepOwn(const std::vector<std::string>& urls, const std::string& token) {
  auto place = _kept.begin();
  for (const auto& url : urls) {
    place = std::next(_kept.insert(place, {escapingInvalidCharacters(url), token}));
  }
}

bool BusURLEvents::publish() {
  sd_bus_slot* slot = nullptr;
  if (!_bus.isOpen() || sd_bus_add_object_vtable(_bus.connection(), &slot, objectPath,
                                                 interfaceName, methods, this) < 0) {
    return false;
  }
  _object.reset(slot);
  return true;
}

/// Sent at once behind the greeting, so that the two need one round trip together.
BusURLEvents::Answer BusURLEvents::requestName() {
  sd_bus_message* message = nullptr;
  if (sd_bus_message_new_method_call(_bus.connection(), &message, "org.freedesktop.DBus",
                                     "/org/freedesktop/DBus", "org.freedesktop.DBus",
                                     "RequestName") < 0) {
    return Answer::Failed;
  }
  const BusMessage request(message);
  constexpr std::uint32_t doNotQueue = 4;
  if (sd_bus_message_append(message, "su", busName, doNotQueue) < 0) {
    return Answer::Failed;
  }
  const auto answer = _bus.call(message);
  std::uint32_t result = 0;
  if (!answer || sd_bus_message_read(answer.get(), "u", &result) <= 0) {
    return Answer::Failed;
  }
  return result == primaryOwner || result == alreadyOwner ? Answer::Yes : Answer::No;
}

/// `No` when there is no owner any more.
BusURLEvents::Answer BusURLEvents::handOver(const std::vector<std::string>& urls,
                                            const std::string& token) {
  const auto call = newOpenCall(_bus.connection(), urls, token);
  if (!call || sd_bus_message_set_auto_start(call.get(), 0) < 0) {
    return Answer::Failed;
  }
  const auto answer = _bus.call(call.get());
  if (!answer || !_bus.isOpen()) {
    return Answer::Failed;
  }
  if (isAnsweredForMissingOwner(answer.get())) {
    return Answer::No;
  }
  return sd_bus_message_is_method_error(answer.get(), nullptr) > 0 ? Answer::Failed : Answer::Yes;
}

std::vector<std::string> BusURLEvents::release() {
  // When the answer is here, so is every call that the bus sent to the name.
  if (std::exchange(_ownsName, false) && sd_bus_release_name(_bus.connection(), busName) >= 0) {
    while (sd_bus_process(_bus.connection(), nullptr) > 0) {
    }
  }
  std::vector<std::string> left;
  for (const auto& event : std::exchange(_kept, {})) {
    if (!sendOn(event) && event.directObject) {
      left.push_back(*event.directObject);
    }
  }
  return left;
}

/// Waits for the answer: a call that the bus keeps for a program that is starting is dropped when
/// its sender goes.
bool BusURLEvents::sendOn(const URLEvent& event) {
  if (!_bus.isOpen() || !event.directObject) {
    return false;
  }
  const auto call = newOpenCall(_bus.connection(), {*event.directObject}, event.activationToken);
  return call && sd_bus_call(_bus.connection(), call.get(), 0, nullptr, nullptr) >= 0;
}

std::unique_ptr<Registration> BusURLEvents::setEventHandler(URLEvent::Handler handler) {
  _handler = std::move(handler);
  for (std::size_t i = 0; i < _kept.size(); ++i) {
    _bus.runLoop().dispatchAsync([this] { deliverNext(); });
  }
  return std::make_unique<HandlerRegistration>(*this);
}

void BusURLEvents::keep(URLEvent event) {
  _kept.push_back(std::move(event));
  _bus.runLoop().dispatchAsync([this] { deliverNext(); });
}

/// An event leaves the kept ones in the moment it is handed to the handler and not earlier: what is
/// kept when the process leaves is what nobody has seen.
void BusURLEvents::deliverNext() {
  if (!_handler || _kept.empty()) {
    return;
  }
  const auto event = std::move(_kept.front());
  _kept.pop_front();
  const auto handler = _handler;
  handler(event);
}

int BusURLEvents::open(sd_bus_message* message, void* self, sd_bus_error*) {
  std::vector<std::string> urls;
  int result = sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, "s");
  const char* url = nullptr;
  while (result >= 0 && (result = sd_bus_message_read(message, "s", &url)) > 0) {
    urls.push_back(escapingInvalidCharacters(url));
  }
  if (result < 0 || (result = sd_bus_message_exit_container(message)) < 0) {
    return result;
  }
  const auto token = activationToken(readDictionary(message));
  result = sd_bus_reply_method_return(message, nullptr);
  for (auto& received : urls) {
    static_cast<BusURLEvents*>(self)->keep({std::move(received), token});
  }
  return result;
}

/// Being started, or running, is all that most callers ask for.
int BusURLEvents::activate(sd_bus_message* message, void* self, sd_bus_error*) {
  auto* const events = static_cast<BusURLEvents*>(self);
  events->_bus.runLoop().dispatchAsync([events] {
    if (events->_activateHandler) {
      events->_activateHandler();
    }
  });
  return sd_bus_reply_method_return(message, nullptr);
}

int BusURLEvents::activateAction(sd_bus_message* message, void* self, sd_bus_error* error) {
  if (BusApplicationActions* const actions = static_cast<BusURLEvents*>(self)->_actions) {
    return actions->receive(message);
  }
  const char* name = nullptr;
  const int result = sd_bus_message_read(message, "s", &name);
  return result < 0 ? result
                    : sd_bus_error_setf(error, SD_BUS_ERROR_INVALID_ARGS,
                                        "There is no action \"%s\".", name);
}

}  // namespace quennel
