#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/Registration.h"
#include "platform/values/PropertyList.h"

namespace quennel {

/// The workspace's own notifications: between the objects of this process, and apart from every
/// other centre. Main thread only.
class NotificationCenter {
 public:
  /// Whom a notification is about, by identity alone; never dereferenced.
  using Object = const void*;
  struct Notification {
    std::string name;
    Object object = nullptr;
    PropertyList::Dictionary userInfo;
  };
  using Handler = std::function<void(const Notification&)>;

  virtual ~NotificationCenter() = default;

  /// Calls `handler` for every notification of that name about `object`; null stands for any
  /// object.
  [[nodiscard]] virtual std::unique_ptr<Registration> addObserver(const std::string& name,
                                                                  Object object,
                                                                  Handler handler) = 0;

  /// Calls the observers, in the order in which they were added, before it returns. One that is
  /// added meanwhile does not see this notification; one whose registration ends meanwhile is not
  /// called any more.
  virtual void postNotification(const Notification& notification) = 0;
};

}  // namespace quennel
