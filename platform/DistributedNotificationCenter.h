#pragma once

#include <memory>
#include <string>

#include "platform/Notification.h"
#include "platform/Registration.h"

namespace quennel {

/// Notifications between the programs of one user session. Main thread only.
class DistributedNotificationCenter {
 public:
  virtual ~DistributedNotificationCenter() = default;

  /// Calls `handler` on the main queue for every notification of that name, whoever posts it (this
  /// process too). Without a session bus nothing ever arrives.
  [[nodiscard]] virtual std::unique_ptr<Registration> addObserver(
      const std::string& name, Notification::Handler handler) = 0;

  /// Sends the notification to all observers in the session. Never waits for them; a notification
  /// that cannot be sent is dropped. `deliverImmediately` asks that the message has left this
  /// process when the call returns.
  virtual void postNotification(const Notification& notification, bool deliverImmediately) = 0;
};

}  // namespace quennel
