#pragma once

#include <chrono>
#include <functional>

namespace quennel {

/// The main queue and the loop that serves it. Work runs on the main thread, one item after
/// another, in the order in which it became due. Work may itself run a modal loop that serves the
/// queue (`serve`), so an item can run while an earlier one is still on the stack.
class RunLoop {
 public:
  using Work = std::function<void()>;

  virtual ~RunLoop() = default;

  /// Queues `work` behind what is already due. May be called from any thread.
  virtual void dispatchAsync(Work work) = 0;

  /// Queues `work` to become due `delay` from the moment of the call; a delay of zero or less is
  /// due at once. Nothing cancels it; work that is not due when the loop ends is dropped. May be
  /// called from any thread.
  virtual void dispatchAfter(std::chrono::nanoseconds delay, Work work) = 0;

  /// Serves the queue until `terminate`. Main thread, not re-entrant.
  virtual void run() = 0;

  /// Runs everything that is due, without waiting: the call for a modal loop that has taken the
  /// place of `run` for a while. Main thread. Answers false once the loop is terminating: the modal
  /// loop then dismisses what it shows and returns.
  virtual bool serve() = 0;

  /// A descriptor that becomes readable when `serve` has work: what a modal loop waits on beside
  /// its own. Owned by the run loop. A modal loop calls `serve` once before each wait as well, so
  /// that work queued by the main thread itself is seen.
  virtual int descriptor() const = 0;

  /// Sets what runs once, on the main thread, at the first `terminate`, before anything is unwound.
  virtual void setWillTerminateHandler(Work handler) = 0;

  /// Ends the program: calls the handler above, then makes `serve` answer false and `run` return as
  /// soon as the work on the stack has returned. What is still queued, or comes to be queued, is
  /// destroyed and does not run. Main thread; a second call does nothing.
  virtual void terminate() = 0;

  virtual bool isTerminating() const = 0;
};

}  // namespace quennel
