#pragma once

#include <systemd/sd-event.h>

#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <mutex>

#include "platform/RunLoop.h"
#include "platform/linux/base/FileDescriptor.h"
#include "platform/linux/events/EventSource.h"

namespace quennel {

/// The run loop on sd-event, which does not nest: a callback of an event source must do no more
/// than take in the event and queue work. The work runs between two dispatches, where a modal loop
/// may call `serve`.
///
/// All work, whether due at once or later, stands in one queue ordered by the moment it becomes
/// due. Two descriptors wake the loop: a counter, written when there is work that is due, by
/// another thread for instance, and a timer, armed for the earliest moment that is to come. While
/// the loop is awake nothing uses them, so queueing from an event callback or from other work costs
/// no system call.
///
/// SIGTERM, SIGINT and SIGHUP terminate. They are blocked for this purpose, so a child process must
/// be started with an empty signal mask.
class EventRunLoop final : public RunLoop {
 public:
  /// Make it on the main thread before any other thread is started: they inherit the signal mask.
  /// Throws std::system_error when the system refuses a descriptor.
  EventRunLoop();
  EventRunLoop(const EventRunLoop&) = delete;
  EventRunLoop& operator=(const EventRunLoop&) = delete;
  ~EventRunLoop() override;

  /// For the adapters: where they add their event sources. Owned by the run loop.
  sd_event* handle() const { return _event.get(); }

  /// For adapters that have to wait for an answer before `run`, or inside work: serves the queue
  /// until `condition` holds, which is looked at after each event. False when it does not hold
  /// because the loop is terminating.
  bool runUntil(const std::function<bool()>& condition);

  void dispatchAsync(Work work) override;
  void dispatchAfter(std::chrono::nanoseconds delay, Work work) override;
  void run() override;
  bool serve() override;
  int descriptor() const override;
  void setWillTerminateHandler(Work handler) override;
  void terminate() override;
  bool isTerminating() const override { return _terminating; }

 private:
  using Clock = std::chrono::steady_clock;
  struct UnrefEvent {
    void operator()(sd_event* event) const { sd_event_unref(event); }
  };
  enum class Wait { UntilEvent, Never };

  EventSource watch(int descriptor, sd_event_io_handler_t callback);
  void watchCounter();
  void watchTimer();
  void watchSignals();
  void enqueue(Clock::time_point due, Work work);
  void dropQueue();
  Work takeWorkDueAt(Clock::time_point now);
  void runDueWork();
  bool dispatchEvent(Wait wait);
  void goToSleep();
  void wakeUp();
  bool arrangeWakeUp();
  void signal();
  void armTimer(Clock::time_point due);

  std::unique_ptr<sd_event, UnrefEvent> _event;
  FileDescriptor _counter;
  EventSource _counterSource;
  FileDescriptor _timer;
  EventSource _timerSource;
  std::array<EventSource, 3> _signalSources;
  Work _willTerminateHandler;
  bool _terminating = false;

  std::atomic<int> _signalling = 0;  // how many threads are about to write to the counter

  std::mutex _mutex;  // guards all that follows
  std::multimap<Clock::time_point, Work> _queue;
  bool _closed = false;                                    // takes no more work
  Clock::time_point _armedFor = Clock::time_point::max();  // the timer; max: not armed
  bool _signalled = false;  // the counter is written to, or about to be
  bool _asleep = false;
};

}  // namespace quennel
