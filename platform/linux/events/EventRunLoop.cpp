#include "platform/linux/events/EventRunLoop.h"

#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/timerfd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <system_error>
#include <thread>
#include <utility>

namespace quennel {

namespace {

/// `result` is that of an sd-event call: a negative errno value on failure.
void throwOnFailure(int result, const char* what) {
  if (result < 0) {
    throw std::system_error(-result, std::generic_category(), what);
  }
}

}  // namespace

EventRunLoop::EventRunLoop() {
  sd_event* event = nullptr;
  throwOnFailure(sd_event_new(&event), "sd_event_new");
  _event.reset(event);
  watchCounter();
  watchTimer();
  watchSignals();
  goToSleep();
}

EventRunLoop::~EventRunLoop() {
  // The work of another thread may have run before that thread is done with the counter.
  while (_signalling > 0) {
    std::this_thread::yield();
  }
  dropQueue();
}

EventSource EventRunLoop::watch(int descriptor, sd_event_io_handler_t callback) {
  sd_event_source* source = nullptr;
  throwOnFailure(sd_event_add_io(handle(), &source, descriptor, EPOLLIN, callback, this),
                 "sd_event_add_io");
  return EventSource(source);
}

// Being awake is all that the events of both descriptors are for; their callbacks make the
// descriptors unreadable.

void EventRunLoop::watchCounter() {
  _counter.reset(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC));
  if (!_counter) {
    throw std::system_error(errno, std::generic_category(), "eventfd");
  }
  _counterSource = watch(_counter.get(), [](sd_event_source*, int, std::uint32_t, void* self) {
    auto* const runLoop = static_cast<EventRunLoop*>(self);
    const std::lock_guard lock(runLoop->_mutex);
    eventfd_t ignored;
    runLoop->_signalled = false;
    return eventfd_read(runLoop->_counter.get(), &ignored) < 0 ? -errno : 0;
  });
  // sd-event asks the kernel a second time for anything more urgent than what it has found. There
  // is nothing more urgent than this.
  throwOnFailure(sd_event_source_set_priority(_counterSource.get(), INT64_MIN),
                 "sd_event_source_set_priority");
}

void EventRunLoop::watchTimer() {
  _timer.reset(timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC));
  if (!_timer) {
    throw std::system_error(errno, std::generic_category(), "timerfd_create");
  }
  _timerSource = watch(_timer.get(), [](sd_event_source*, int, std::uint32_t, void* self) {
    auto* const runLoop = static_cast<EventRunLoop*>(self);
    const std::lock_guard lock(runLoop->_mutex);
    runLoop->armTimer(Clock::time_point::max());
    return 0;
  });
}

void EventRunLoop::watchSignals() {
  const auto queueTermination = [](sd_event_source*, const signalfd_siginfo*, void* self) {
    auto* runLoop = static_cast<EventRunLoop*>(self);
    runLoop->dispatchAsync([runLoop] { runLoop->terminate(); });
    return 0;
  };
  constexpr std::array signals{SIGTERM, SIGINT, SIGHUP};
  for (std::size_t i = 0; i < signals.size(); ++i) {
    sd_event_source* source = nullptr;
    throwOnFailure(sd_event_add_signal(handle(), &source, signals[i] | SD_EVENT_SIGNAL_PROCMASK,
                                       queueTermination, this),
                   "sd_event_add_signal");
    _signalSources[i].reset(source);
  }
}

void EventRunLoop::dispatchAsync(Work work) { enqueue(Clock::now(), std::move(work)); }

void EventRunLoop::dispatchAfter(std::chrono::nanoseconds delay, Work work) {
  const auto now = Clock::now();
  const auto longest = Clock::time_point::max() - now;
  enqueue(now + std::clamp<std::chrono::nanoseconds>(delay, Clock::duration::zero(), longest),
          std::move(work));
}

void EventRunLoop::enqueue(Clock::time_point due, Work work) {
  bool wakes = false;
  {
    const std::lock_guard lock(_mutex);
    if (_closed) {
      return;
    }
    _queue.emplace(due, std::move(work));  // behind equal ones
    wakes = _asleep && arrangeWakeUp();
  }
  if (wakes) {
    signal();
  }
}

void EventRunLoop::run() {
  runUntil([] { return false; });
}

bool EventRunLoop::runUntil(const std::function<bool()>& condition) {
  while (!_terminating) {
    wakeUp();
    runDueWork();
    goToSleep();
    if (condition()) {
      return true;
    }
    if (!_terminating) {
      dispatchEvent(Wait::UntilEvent);
    }
  }
  return condition();
}

bool EventRunLoop::serve() {
  if (_terminating) {
    return false;
  }
  wakeUp();
  while (dispatchEvent(Wait::Never)) {
  }
  runDueWork();
  goToSleep();
  return !_terminating;
}

int EventRunLoop::descriptor() const { return sd_event_get_fd(handle()); }

void EventRunLoop::setWillTerminateHandler(Work handler) {
  _willTerminateHandler = std::move(handler);
}

void EventRunLoop::terminate() {
  if (std::exchange(_terminating, true)) {
    return;
  }
  if (_willTerminateHandler) {
    _willTerminateHandler();
  }
  dropQueue();
}

void EventRunLoop::dropQueue() {
  // Destroyed when the lock is free again: what the work holds may call the loop as it goes.
  std::multimap<Clock::time_point, Work> dropped;
  const std::lock_guard lock(_mutex);
  _closed = true;
  std::swap(dropped, _queue);
}

EventRunLoop::Work EventRunLoop::takeWorkDueAt(Clock::time_point now) {
  const std::lock_guard lock(_mutex);
  const auto first = _queue.begin();
  if (first == _queue.end() || first->first > now) {
    return nullptr;
  }
  auto work = std::move(first->second);
  _queue.erase(first);
  return work;
}

/// Work that becomes due meanwhile is left for the next turn, so that work which keeps queueing
/// itself does not shut out the events.
void EventRunLoop::runDueWork() {
  const auto now = Clock::now();
  while (!_terminating) {
    const auto work = takeWorkDueAt(now);
    if (!work) {
      return;
    }
    work();
    wakeUp();  // a modal loop inside it has left the loop asleep
  }
}

/// Answers whether there was an event.
bool EventRunLoop::dispatchEvent(Wait wait) {
  int ready = sd_event_prepare(handle());
  throwOnFailure(ready, "sd_event_prepare");
  if (ready == 0) {
    ready = sd_event_wait(handle(), wait == Wait::Never ? 0 : UINT64_MAX);
    throwOnFailure(ready, "sd_event_wait");
  }
  if (ready == 0) {
    return false;
  }
  wakeUp();
  throwOnFailure(sd_event_dispatch(handle()), "sd_event_dispatch");
  return true;
}

/// From here on whoever queues work has to see that the loop wakes in time for it.
void EventRunLoop::goToSleep() {
  bool wakes = false;
  {
    const std::lock_guard lock(_mutex);
    _asleep = true;
    wakes = arrangeWakeUp();
  }
  if (wakes) {
    signal();
  }
}

void EventRunLoop::wakeUp() {
  const std::lock_guard lock(_mutex);
  _asleep = false;
}

/// Called with the lock held. Answers whether the caller has to call `signal` when it has let go of
/// the lock: with it, the loop would wake only to wait for the lock.
bool EventRunLoop::arrangeWakeUp() {
  const auto earliest = _queue.empty() ? Clock::time_point::max() : _queue.begin()->first;
  if (earliest <= Clock::now()) {
    const bool isNews = !std::exchange(_signalled, true);
    _signalling += isNews ? 1 : 0;
    return isNews;
  }
  if (earliest != _armedFor) {
    armTimer(earliest);
  }
  return false;
}

/// A timer that is set to a time in the past would do as well; arming it takes five times as long.
void EventRunLoop::signal() {
  const bool isDone = eventfd_write(_counter.get(), 1) == 0;
  const int code = errno;
  --_signalling;
  if (!isDone) {
    throw std::system_error(code, std::generic_category(), "eventfd_write");
  }
}

/// Called with the lock held.
void EventRunLoop::armTimer(Clock::time_point due) {
  itimerspec timer{};
  if (due != Clock::time_point::max()) {
    const auto sinceBoot = due.time_since_epoch();
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(sinceBoot);
    timer.it_value.tv_sec = seconds.count();
    timer.it_value.tv_nsec = (sinceBoot - seconds).count();
  }
  if (timerfd_settime(_timer.get(), TFD_TIMER_ABSTIME, &timer, nullptr) < 0) {
    throw std::system_error(errno, std::generic_category(), "timerfd_settime");
  }
  _armedFor = due;
}

}  // namespace quennel
