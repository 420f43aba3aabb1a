#include "bench/watch/Watchers.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <array>

namespace quennel::bench {

void Arrivals::note() {
  if (_isAwaited.exchange(false)) {
    _first = Clock::now().time_since_epoch().count();
  }
  ++_count;
  _count.notify_all();
}

Arrivals::Clock::time_point Arrivals::waitForMoreThan(int count) {
  for (int now = _count; now <= count; now = _count) {
    _count.wait(now);
  }
  return Clock::time_point(Clock::duration(_first.load()));
}

void Arrivals::waitForSilence() {
  for (int before = -1; before != _count;) {
    before = _count;
    std::this_thread::sleep_for(std::chrono::milliseconds(3));
  }
  _isAwaited = true;
}

OurWatcher::OurWatcher(RunLoop& runLoop)
    : _queue(VDKQueue::create({_factory, runLoop, _workspace, _center})) {
  _queue->setDelegate(this);
}

OurWatcher::~OurWatcher() {
  _queue->removeAllPaths();
  _arrivals.waitForSilence();
}

void OurWatcher::add(const std::vector<std::string>& paths) {
  for (const std::string& path : paths) {
    _queue->addPath(path);
  }
}

BareWatcher::BareWatcher()
    : _inotify(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)),
      _wake(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      _watcherThread([this] { waitForEvents(); }),
      _deliveryThread([this] { deliver(); }) {}

BareWatcher::~BareWatcher() {
  _stop = true;
  _watcherThread.join();
  _deliveryThread.join();
}

void BareWatcher::add(const std::vector<std::string>& paths) {
  for (const std::string& path : paths) {
    const std::lock_guard lock(_mutex);
    const int watch = inotify_add_watch(_inotify.get(), path.c_str(),
                                        IN_MODIFY | IN_ATTRIB | IN_DELETE_SELF | IN_MOVE_SELF);
    _paths.emplace(watch, path);
  }
}

void BareWatcher::waitForEvents() {
  alignas(inotify_event) std::array<char, 16384> buffer;
  while (!_stop) {
    pollfd readable{_inotify.get(), POLLIN, 0};
    if (poll(&readable, 1, 100) > 0) {
      const ssize_t size = read(_inotify.get(), buffer.data(), buffer.size());
      handOver(buffer.data(), buffer.data() + (size > 0 ? size : 0));
    }
  }
}

void BareWatcher::handOver(const char* begin, const char* end) {
  for (const char* position = begin; position != end;) {
    const auto& event = *reinterpret_cast<const inotify_event*>(position);
    position += sizeof event + event.len;
    const std::lock_guard lock(_mutex);
    _events.push_back(_paths[event.wd]);
    if (_events.size() == 1) {
      static_cast<void>(eventfd_write(_wake.get(), 1));
    }
  }
}

void BareWatcher::deliver() {
  std::vector<std::string> events;
  while (!_stop) {
    pollfd readable{_wake.get(), POLLIN, 0};
    if (poll(&readable, 1, 100) <= 0) {
      continue;
    }
    eventfd_t ignored;
    static_cast<void>(eventfd_read(_wake.get(), &ignored));
    {
      const std::lock_guard lock(_mutex);
      events.swap(_events);
    }
    for (std::size_t i = 0; i < events.size(); ++i) {
      _arrivals.note();
    }
    events.clear();
  }
}

}  // namespace quennel::bench
