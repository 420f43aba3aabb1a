#pragma once

#include <future>
#include <memory>
#include <utility>

#include "platform/RunLoop.h"

namespace quennel {

/// Runs `work` on the main queue and waits until it has run. For every thread but the main one.
/// False when the loop ends without running it.
inline bool dispatchSync(RunLoop& runLoop, RunLoop::Work work) {
  auto done = std::make_shared<std::promise<void>>();
  auto finished = done->get_future();
  runLoop.dispatchAsync([work = std::move(work), done = std::move(done)] {
    work();
    done->set_value();
  });
  try {
    finished.get();
    return true;
  } catch (const std::future_error&) {
    return false;  // the work was destroyed, and the promise with it
  }
}

}  // namespace quennel
