#include "platform/linux/bus/BusDistributedNotificationCenter.h"

#include <optional>
#include <utility>
#include <vector>

#include "platform/linux/bus/BusPropertyList.h"
#include "platform/linux/bus/BusTypes.h"

namespace quennel {

namespace {

using Center = BusDistributedNotificationCenter;

std::optional<Notification> readNotification(sd_bus_message* message) {
  const char* name = nullptr;
  const char* object = nullptr;
  if (!sd_bus_message_has_signature(message, "ssa{sv}") ||
      sd_bus_message_read(message, "ss", &name, &object) <= 0) {
    return std::nullopt;
  }
  Notification notification{name, std::nullopt, readDictionary(message)};
  if (*object) {
    notification.object = object;
  }
  return notification;
}

std::string matchRule(const std::string& name) {
  auto rule = std::string("type='signal',path='") + Center::objectPath + "',interface='" +
              Center::interfaceName + "',member='" + Center::signalName + "'";
  // The bus and this side of it do not agree on how to escape these two.
  if (name.find_first_of("'\\") == std::string::npos) {
    rule += ",arg0='" + name + "'";
  }
  return rule;
}

}  // namespace

class BusDistributedNotificationCenter::Observer final : public Registration {
 public:
  Observer(RunLoop& runLoop, std::string name) : _runLoop(runLoop), _name(std::move(name)) {}

  void observe(sd_bus* connection) {
    const auto receive = [](sd_bus_message* message, void* self, sd_bus_error*) {
      static_cast<Observer*>(self)->receive(message);
      return 0;
    };
    // Should the bus refuse the match nothing arrives; by default the connection would be closed.
    const auto ignoreAnswer = [](sd_bus_message*, void*, sd_bus_error*) { return 0; };
    sd_bus_slot* slot = nullptr;
    if (sd_bus_add_match_async(connection, &slot, matchRule(_name).c_str(), receive, ignoreAnswer,
                               this) >= 0) {
      _match.reset(slot);
    }
  }

  void setHandler(Notification::Handler handler) {
    _handler = std::make_shared<Notification::Handler>(std::move(handler));
    for (auto& notification : std::exchange(_kept, {})) {
      deliver(std::move(notification));
    }
  }

 private:
  void receive(sd_bus_message* message) {
    auto notification = readNotification(message);
    if (!notification || notification->name != _name) {
      return;
    }
    if (_handler) {
      deliver(std::move(*notification));
    } else {
      _kept.push_back(std::move(*notification));
    }
  }

  void deliver(Notification notification) {
    _runLoop.dispatchAsync(
        [observer = std::weak_ptr(_handler), received = std::move(notification)] {
          if (const auto handler = observer.lock()) {
            (*handler)(received);
          }
        });
  }

  RunLoop& _runLoop;
  std::string _name;
  std::shared_ptr<Notification::Handler> _handler;  // work that is still queued looks if it lives
  std::vector<Notification> _kept;                  // while there is no handler
  BusSlot _match;
};

BusDistributedNotificationCenter::BusDistributedNotificationCenter(SessionBus& bus) : _bus(bus) {}

BusDistributedNotificationCenter::~BusDistributedNotificationCenter() = default;

std::unique_ptr<BusDistributedNotificationCenter::Observer>
BusDistributedNotificationCenter::observe(const std::string& name) {
  auto observer = std::make_unique<Observer>(_bus.runLoop(), name);
  if (_bus.isOpen()) {
    observer->observe(_bus.connection());
  }
  return observer;
}

void BusDistributedNotificationCenter::listen(const std::string& name) {
  _listening.try_emplace(name, observe(name));
}

std::unique_ptr<Registration> BusDistributedNotificationCenter::addObserver(
    const std::string& name, Notification::Handler handler) {
  auto listening = _listening.extract(name);
  auto observer = listening ? std::move(listening.mapped()) : observe(name);
  observer->setHandler(std::move(handler));
  return observer;
}

void BusDistributedNotificationCenter::postNotification(const Notification& notification,
                                                        bool deliverImmediately) {
  if (!_bus.isOpen()) {
    return;
  }
  sd_bus_message* signal = nullptr;
  if (sd_bus_message_new_signal(_bus.connection(), &signal, objectPath, interfaceName, signalName) <
      0) {
    return;
  }
  const BusMessage owned(signal);
  if (sd_bus_message_append(signal, "ss", notification.name.c_str(),
                            notification.object.value_or("").c_str()) < 0 ||
      appendDictionary(signal, notification.userInfo) < 0 ||
      sd_bus_send(_bus.connection(), signal, nullptr) < 0) {
    return;
  }
  if (deliverImmediately) {
    sd_bus_flush(_bus.connection());
  }
}

}  // namespace quennel
