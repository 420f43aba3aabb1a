#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/KernelQueue.h"
#include "platform/linux/base/FileDescriptor.h"
#include "platform/linux/watch/VnodeTable.h"

namespace quennel {

/// A kernel queue on inotify, with epoll for the waiting.
class InotifyKernelQueue final : public KernelQueue {
 public:
  /// Null when the system refuses a descriptor.
  static std::shared_ptr<InotifyKernelQueue> create();

  int open(const SharedText& path, Error* error = nullptr) override;
  void close(int descriptor) override;
  int kevent(const KernelEvent& change) override;
  int kevent(KernelEvent& event, std::chrono::nanoseconds timeout) override;

  /// See `KernelQueueFactory`: when this returns, every other thread that took an event waits again
  /// and does not return, or had a second to come back and did not.
  void end();

 private:
  using Clock = std::chrono::steady_clock;
  using Lock = std::unique_lock<std::mutex>;

  InotifyKernelQueue();
  bool startWaitingFor(int descriptor, std::uint32_t events) const;
  int waitUntil(Clock::time_point deadline, Lock& lock);
  void takeIn(int descriptor);
  void wakeWaitingThread();
  void noteReturnOfThread();
  [[noreturn]] static void waitForEndOfProcess(Lock& lock);

  const FileDescriptor _wait;  // epoll
  const FileDescriptor _wake;  // eventfd
  std::mutex _mutex;           // guards all that follows
  std::condition_variable _returned;
  VnodeTable _vnodes;
  bool _waitsForMounts = false;
  bool _ended = false;
  int _waitingThreads = 0;
  /// The threads that have an event and have not come back for the next one.
  std::vector<std::thread::id> _handling;
};

}  // namespace quennel
