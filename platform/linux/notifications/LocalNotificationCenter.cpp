#include "platform/linux/notifications/LocalNotificationCenter.h"

#include <utility>
#include <vector>

namespace quennel {

class LocalNotificationCenter::ObserverRegistration final : public Registration {
 public:
  explicit ObserverRegistration(std::shared_ptr<const Observer> observer)
      : _observer(std::move(observer)) {}

 private:
  std::shared_ptr<const Observer> _observer;
};

std::unique_ptr<Registration> LocalNotificationCenter::addObserver(const std::string& name,
                                                                   Object object, Handler handler) {
  std::erase_if(_observers, [](const auto& observer) { return observer.expired(); });
  const auto observer =
      std::make_shared<const Observer>(Observer{name, object, std::move(handler)});
  _observers.push_back(observer);
  return std::make_unique<ObserverRegistration>(observer);
}

void LocalNotificationCenter::postNotification(const Notification& notification) {
  const auto observers = std::vector(_observers.begin(), _observers.end());
  for (const auto& observing : observers) {
    const auto observer = observing.lock();
    if (observer && observer->name == notification.name &&
        (observer->object == nullptr || observer->object == notification.object)) {
      observer->handler(notification);
    }
  }
}

}  // namespace quennel
