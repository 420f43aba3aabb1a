#pragma once

#include <chrono>
#include <functional>
#include <thread>

namespace quennel::test {

/// Looks at what another process does until `condition` holds. False when that did not happen
/// within `time`.
[[nodiscard]] inline bool eventually(const std::function<bool()>& condition,
                                     std::chrono::milliseconds time = std::chrono::seconds(10)) {
  const auto deadline = std::chrono::steady_clock::now() + time;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) {
      return false;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  return true;
}

}  // namespace quennel::test
