#include "tests/support/FakeRunLoop.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace quennel::test {

using std::chrono::nanoseconds;

FakeRunLoop::FakeRunLoop() : _descriptor(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {
  if (_descriptor < 0) {
    throw std::system_error(errno, std::generic_category(), "eventfd");
  }
}

FakeRunLoop::~FakeRunLoop() {
  dropQueue();
  close(_descriptor);
}

nanoseconds FakeRunLoop::now() const {
  const std::lock_guard lock(_mutex);
  return _now;
}

std::size_t FakeRunLoop::pendingCount() const {
  const std::lock_guard lock(_mutex);
  return _queue.size();
}

void FakeRunLoop::advance(nanoseconds duration) {
  const auto target = now() + duration;
  while (!_terminating && jumpToNextWork(target)) {
    if (const auto work = takeWorkDueAt(now())) {
      work();
    }
  }
  const std::lock_guard lock(_mutex);
  _now = std::max(_now, target);
  updateDescriptor();
}

bool FakeRunLoop::runUntil(const std::function<bool()>& condition, nanoseconds realTime) {
  const auto deadline = std::chrono::steady_clock::now() + realTime;
  while (!condition()) {
    runDueWork();
    if (condition()) {
      return true;
    }
    // The condition may also become true by what another thread does without queueing anything.
    const auto nextLook = std::chrono::steady_clock::now() + std::chrono::milliseconds(1);
    if (_terminating || nextLook > deadline) {
      return false;
    }
    std::unique_lock lock(_mutex);
    _queued.wait_until(lock, nextLook);
  }
  return true;
}

void FakeRunLoop::dispatchAsync(Work work) { enqueue(now(), std::move(work)); }

void FakeRunLoop::dispatchAfter(nanoseconds delay, Work work) {
  const auto start = now();
  enqueue(start + std::clamp(delay, nanoseconds::zero(), nanoseconds::max() - start),
          std::move(work));
}

void FakeRunLoop::enqueue(nanoseconds due, Work work) {
  const std::lock_guard lock(_mutex);
  if (_closed) {
    return;
  }
  _queue.emplace(std::max(due, _now), std::move(work));
  updateDescriptor();
  _queued.notify_all();
}

void FakeRunLoop::run() {
  while (!_terminating) {
    runDueWork();
    if (_terminating || jumpToNextWork(nanoseconds::max())) {
      continue;
    }
    std::unique_lock lock(_mutex);
    if (!_queued.wait_for(lock, std::chrono::seconds(10), [this] { return !_queue.empty(); })) {
      throw std::logic_error("the run loop has nothing left to run and was not terminated");
    }
  }
}

bool FakeRunLoop::serve() {
  if (!_terminating) {
    runDueWork();
  }
  return !_terminating;
}

void FakeRunLoop::setWillTerminateHandler(Work handler) {
  _willTerminateHandler = std::move(handler);
}

void FakeRunLoop::terminate() {
  if (std::exchange(_terminating, true)) {
    return;
  }
  if (_willTerminateHandler) {
    _willTerminateHandler();
  }
  dropQueue();
}

void FakeRunLoop::dropQueue() {
  std::multimap<nanoseconds, Work> dropped;  // destroyed when the lock is free again
  const std::lock_guard lock(_mutex);
  _closed = true;
  std::swap(dropped, _queue);
  updateDescriptor();
}

RunLoop::Work FakeRunLoop::takeWorkDueAt(nanoseconds moment) {
  const std::lock_guard lock(_mutex);
  const auto first = _queue.begin();
  if (first == _queue.end() || first->first > moment) {
    return nullptr;
  }
  auto work = std::move(first->second);
  _queue.erase(first);
  updateDescriptor();
  return work;
}

/// As many items as were due at the start; what they queue is left for the next call.
void FakeRunLoop::runDueWork() {
  std::unique_lock lock(_mutex);
  auto count = std::distance(_queue.begin(), _queue.upper_bound(_now));
  lock.unlock();
  for (; count > 0 && !_terminating; --count) {
    if (const auto work = takeWorkDueAt(now())) {
      work();
    }
  }
}

/// Moves time to the moment of the first item, unless that lies behind `latest`.
bool FakeRunLoop::jumpToNextWork(nanoseconds latest) {
  const std::lock_guard lock(_mutex);
  if (_queue.empty() || _queue.begin()->first > latest) {
    return false;
  }
  _now = std::max(_now, _queue.begin()->first);
  return true;
}

/// Called with the lock held: the descriptor is readable as long as something is due.
void FakeRunLoop::updateDescriptor() {
  eventfd_t ignored = 0;
  if (!_queue.empty() && _queue.begin()->first <= _now) {
    eventfd_write(_descriptor, 1);
  } else {
    eventfd_read(_descriptor, &ignored);
  }
}

}  // namespace quennel::test
