#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "platform/VolumeEvents.h"
#include "platform/linux/base/FileDescriptor.h"
#include "platform/linux/events/EventRunLoop.h"
#include "platform/linux/events/EventSource.h"
#include "platform/linux/mounts/MountTable.h"

namespace quennel {

/// Volumes that come and go, by the kernel's table of mounts: any user may wait for it to change.
/// The kernel only says that it did, maybe several times; what did is found by reading it again.
class MountTableEvents final : public VolumeEvents {
 public:
  /// The run loop outlives this object. Where there is no such table, nothing is ever reported.
  explicit MountTableEvents(EventRunLoop& runLoop);
  MountTableEvents(const MountTableEvents&) = delete;
  MountTableEvents& operator=(const MountTableEvents&) = delete;
  ~MountTableEvents() override;

  [[nodiscard]] std::unique_ptr<Registration> addObserver(Handler didMount,
                                                          Handler didUnmount) override;

 private:
  struct Observer {
    Handler didMount;
    Handler didUnmount;
  };
  class ObserverRegistration;

  void takeFirstLook();
  void lookAgain();
  void notify(Handler Observer::*handler) const;

  EventRunLoop& _runLoop;
  FileDescriptor _table;
  EventSource _changes;
  EventSource _firstLook;
  std::optional<MountTable> _known;
  /// Each is owned by its registration.
  std::vector<std::weak_ptr<const Observer>> _observers;
};

}  // namespace quennel
