#include "platform/linux/mounts/MountTableEvents.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/epoll.h>

#include <cstdint>
#include <system_error>
#include <utility>

namespace quennel {

namespace {

/// `result` is that of an sd-event call: a negative errno value on failure.
void throwOnFailure(int result, const char* what) {
  if (result < 0) {
    throw std::system_error(-result, std::generic_category(), what);
  }
}

/// Whether the table has changed since this was last asked, or the table opened.
bool hasChanged(int table) {
  pollfd change{table, POLLPRI, 0};
  return poll(&change, 1, 0) > 0;
}

}  // namespace

class MountTableEvents::ObserverRegistration final : public Registration {
 public:
  explicit ObserverRegistration(std::shared_ptr<const Observer> observer)
      : _observer(std::move(observer)) {}

 private:
  std::shared_ptr<const Observer> _observer;
};

MountTableEvents::MountTableEvents(EventRunLoop& runLoop)
    : _runLoop(runLoop), _table(open(MountTable::path, O_RDONLY | O_CLOEXEC)) {
  if (!_table) {
    return;
  }
  const auto changed = [](sd_event_source*, int, std::uint32_t, void* self) {
    static_cast<MountTableEvents*>(self)->lookAgain();
    return 0;
  };
  const auto idle = [](sd_event_source*, void* self) {
    static_cast<MountTableEvents*>(self)->takeFirstLook();
    return 0;
  };
  sd_event_source* source = nullptr;
  throwOnFailure(sd_event_add_io(runLoop.handle(), &source, _table.get(), EPOLLPRI, changed, this),
                 "sd_event_add_io");
  _changes.reset(source);
  // Reading the table takes longer than most of a start does. It can wait until nothing else is to
  // be done.
  throwOnFailure(sd_event_add_defer(runLoop.handle(), &source, idle, this), "sd_event_add_defer");
  _firstLook.reset(source);
  throwOnFailure(sd_event_source_set_priority(source, SD_EVENT_PRIORITY_IDLE),
                 "sd_event_source_set_priority");
}

MountTableEvents::~MountTableEvents() = default;

std::unique_ptr<Registration> MountTableEvents::addObserver(Handler didMount, Handler didUnmount) {
  std::erase_if(_observers, [](const auto& observer) { return observer.expired(); });
  const auto observer =
      std::make_shared<const Observer>(Observer{std::move(didMount), std::move(didUnmount)});
  _observers.push_back(observer);
  return std::make_unique<ObserverRegistration>(observer);
}

void MountTableEvents::takeFirstLook() {
  if (_known) {
    return;
  }
  _known = MountTable::current();
  if (hasChanged(_table.get())) {
    // Since the start, and what it was cannot be told.
    notify(&Observer::didUnmount);
    notify(&Observer::didMount);
  }
}

void MountTableEvents::lookAgain() {
  MountTable table = MountTable::current();
  const bool unmounted = !_known || !_known->without(table).empty();
  const bool mounted = !_known || !table.without(*_known).empty();
  _known = std::move(table);
  if (unmounted) {
    notify(&Observer::didUnmount);
  }
  if (mounted) {
    notify(&Observer::didMount);
  }
}

void MountTableEvents::notify(Handler Observer::*handler) const {
  for (const auto& observing : _observers) {
    _runLoop.dispatchAsync([observing, handler] {
      if (const auto observer = observing.lock()) {
        ((*observer).*handler)();
      }
    });
  }
}

}  // namespace quennel
