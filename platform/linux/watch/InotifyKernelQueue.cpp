#include "platform/linux/watch/InotifyKernelQueue.h"

#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>

namespace quennel {

std::shared_ptr<InotifyKernelQueue> InotifyKernelQueue::create() {
  std::shared_ptr<InotifyKernelQueue> queue(new InotifyKernelQueue);
  const bool isValid = queue->_vnodes.isValid() &&
                       queue->startWaitingFor(queue->_vnodes.eventDescriptor(), EPOLLIN) &&
                       queue->startWaitingFor(queue->_wake.get(), EPOLLIN);
  return isValid ? queue : nullptr;
}

InotifyKernelQueue::InotifyKernelQueue()
    : _wait(epoll_create1(EPOLL_CLOEXEC)), _wake(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

bool InotifyKernelQueue::startWaitingFor(int descriptor, std::uint32_t events) const {
  epoll_event event{};
  event.events = events;
  event.data.fd = descriptor;
  return epoll_ctl(_wait.get(), EPOLL_CTL_ADD, descriptor, &event) == 0;
}

int InotifyKernelQueue::open(const SharedText& path, Error* error) {
  const std::lock_guard lock(_mutex);
  const int descriptor = _vnodes.open(path, error);
  wakeWaitingThread();
  return descriptor;
}

void InotifyKernelQueue::close(int descriptor) {
  const std::lock_guard lock(_mutex);
  _vnodes.close(descriptor);
}

int InotifyKernelQueue::kevent(const KernelEvent& change) {
  const std::lock_guard lock(_mutex);
  if (!_vnodes.submit(change)) {
    return -1;
  }
  if (!_waitsForMounts && _vnodes.mountDescriptor() >= 0) {
    _waitsForMounts = startWaitingFor(_vnodes.mountDescriptor(), EPOLLPRI);
  }
  return 0;
}

int InotifyKernelQueue::kevent(KernelEvent& event, std::chrono::nanoseconds timeout) {
  const auto start = Clock::now();
  const auto deadline =
      start + std::min<Clock::duration>(timeout, Clock::time_point::max() - start);
  Lock lock(_mutex);
  noteReturnOfThread();
  for (bool isFirst = true;; isFirst = false) {
    if (_ended) {
      waitForEndOfProcess(lock);
    }
    if (_vnodes.takeEvent(event)) {
      _handling.push_back(std::this_thread::get_id());
      wakeWaitingThread();
      return 1;
    }
    if (!isFirst && Clock::now() >= deadline) {
      return 0;
    }
    if (const int result = waitUntil(deadline, lock); result <= 0 && !_ended) {
      return result;
    }
  }
}

/// Answers as epoll does.
int InotifyKernelQueue::waitUntil(Clock::time_point deadline, Lock& lock) {
  using Milliseconds = std::chrono::duration<int, std::milli>;
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
  const auto limit =
      std::clamp<std::chrono::milliseconds>(left, Milliseconds(0), Milliseconds::max());
  std::array<epoll_event, 3> ready;
  ++_waitingThreads;
  lock.unlock();
  const int count = epoll_wait(_wait.get(), ready.data(), static_cast<int>(ready.size()),
                               static_cast<int>(limit.count()));
  lock.lock();
  --_waitingThreads;
  for (int i = 0; i < count; ++i) {
    takeIn(ready[static_cast<std::size_t>(i)].data.fd);
  }
  return count;
}

void InotifyKernelQueue::takeIn(int descriptor) {
  if (descriptor == _vnodes.eventDescriptor()) {
    _vnodes.update();
  } else if (descriptor == _vnodes.mountDescriptor()) {
    _vnodes.updateMounts();
  } else if (!_ended) {
    eventfd_t ignored;
    // Fails when another thread was faster.
    static_cast<void>(eventfd_read(_wake.get(), &ignored));
  }
}

/// For events that came to light in a thread that does not take them.
void InotifyKernelQueue::wakeWaitingThread() {
  if (_waitingThreads > 0 && _vnodes.hasEvent()) {
    // Fails only when the counter is at its limit, and then it wakes as well.
    static_cast<void>(eventfd_write(_wake.get(), 1));
  }
}

void InotifyKernelQueue::noteReturnOfThread() {
  std::erase(_handling, std::this_thread::get_id());
  if (_ended) {
    _returned.notify_all();
  }
}

void InotifyKernelQueue::waitForEndOfProcess(Lock& lock) {
  lock.unlock();
  while (true) {
    pause();
  }
}

void InotifyKernelQueue::end() {
  Lock lock(_mutex);
  _ended = true;
  static_cast<void>(eventfd_write(_wake.get(), 1));  // never taken back
  _returned.wait_for(lock, std::chrono::seconds(1), [this] {
    return std::all_of(_handling.begin(), _handling.end(),
                       [](std::thread::id thread) { return thread == std::this_thread::get_id(); });
  });
}

}  // namespace quennel
