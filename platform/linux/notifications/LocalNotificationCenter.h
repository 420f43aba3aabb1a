#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/NotificationCenter.h"

namespace quennel {

/// A notification centre that lives in this object.
class LocalNotificationCenter final : public NotificationCenter {
 public:
  [[nodiscard]] std::unique_ptr<Registration> addObserver(const std::string& name, Object object,
                                                          Handler handler) override;
  void postNotification(const Notification& notification) override;

 private:
  struct Observer {
    std::string name;
    Object object;
    Handler handler;
  };
  class ObserverRegistration;

  /// Each is owned by its registration, which may outlive the centre.
  std::vector<std::weak_ptr<const Observer>> _observers;
};

}  // namespace quennel
