#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>

#include "platform/RunLoop.h"

namespace quennel::test {

/// A run loop in virtual time: nothing waits, time passes only when the test says so. Work may be
/// queued from any thread; everything else is for the test's thread.
///
/// A fake of something modal calls `serve`, or `advance` to let time pass while it is up.
class FakeRunLoop final : public RunLoop {
 public:
  FakeRunLoop();
  ~FakeRunLoop() override;

  /// The virtual time since the loop was made.
  std::chrono::nanoseconds now() const;

  /// Lets `duration` pass: runs all work that becomes due, each item at its moment, the work that
  /// it queues included.
  void advance(std::chrono::nanoseconds duration);

  /// Runs what is due now, and what that queues to be due now.
  void runUntilIdle() { advance(std::chrono::nanoseconds::zero()); }

  /// For work queued by other threads: runs it as it comes until `condition` holds. False when that
  /// did not happen within `realTime`.
  [[nodiscard]] bool runUntil(const std::function<bool()>& condition,
                              std::chrono::nanoseconds realTime = std::chrono::seconds(10));

  /// How many items are queued, whether due or not.
  std::size_t pendingCount() const;

  void dispatchAsync(Work work) override;
  void dispatchAfter(std::chrono::nanoseconds delay, Work work) override;
  /// Jumps from one item to the next until `terminate`. With nothing left to run it waits a while
  /// in real time for another thread, then throws, where a real loop would wait for ever.
  void run() override;
  bool serve() override;
  int descriptor() const override { return _descriptor; }
  void setWillTerminateHandler(Work handler) override;
  void terminate() override;
  bool isTerminating() const override { return _terminating; }

 private:
  void enqueue(std::chrono::nanoseconds due, Work work);
  void dropQueue();
  Work takeWorkDueAt(std::chrono::nanoseconds moment);
  void runDueWork();
  bool jumpToNextWork(std::chrono::nanoseconds latest);
  void updateDescriptor();

  Work _willTerminateHandler;
  bool _terminating = false;
  int _descriptor;

  mutable std::mutex _mutex;  // guards all that follows
  std::condition_variable _queued;
  std::multimap<std::chrono::nanoseconds, Work> _queue;
  bool _closed = false;  // takes no more work
  std::chrono::nanoseconds _now{0};
};

}  // namespace quennel::test
