#pragma once

#include <map>
#include <memory>
#include <string>

#include "platform/DistributedNotificationCenter.h"
#include "platform/linux/bus/SessionBus.h"

namespace quennel {

/// Notifications as the signal `net.brellow.DistributedNotificationCenter.Posted(s name, s object,
/// a{sv} userInfo)` of the object `/net/brellow/DistributedNotificationCenter`, whoever sends it.
/// An absent object travels as the empty text. A notification with a text that is not UTF-8 cannot
/// travel and is dropped.
///
/// The bus sends on only the names that are observed, so other programs' notifications do not wake
/// this process.
class BusDistributedNotificationCenter final : public DistributedNotificationCenter {
 public:
  static constexpr auto objectPath = "/net/brellow/DistributedNotificationCenter";
  static constexpr auto interfaceName = "net.brellow.DistributedNotificationCenter";
  static constexpr auto signalName = "Posted";

  /// The bus is not owned and outlives this object and its observers.
  explicit BusDistributedNotificationCenter(SessionBus& bus);
  ~BusDistributedNotificationCenter() override;

  /// From now on keeps the notifications of that name for the observer that is added first. What
  /// the bus is sent after this call, it deals with after it: a program that listens before it
  /// claims a name misses nothing that is meant for the owner of the name.
  void listen(const std::string& name);

  [[nodiscard]] std::unique_ptr<Registration> addObserver(const std::string& name,
                                                          Notification::Handler handler) override;
  void postNotification(const Notification& notification, bool deliverImmediately) override;

 private:
  class Observer;

  std::unique_ptr<Observer> observe(const std::string& name);

  SessionBus& _bus;
  std::map<std::string, std::unique_ptr<Observer>> _listening;
};

}  // namespace quennel
