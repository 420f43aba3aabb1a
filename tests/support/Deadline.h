#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <thread>

namespace quennel::test {

/// The moment until which a test waits. Waiting is for a condition; the deadline only ends a wait
/// that would never end.
class Deadline {
 public:
  using Clock = std::chrono::steady_clock;

  /// Far more than anything takes on a machine under load.
  static constexpr std::chrono::seconds standard{20};

  explicit Deadline(Clock::duration within = standard) : _moment(Clock::now() + within) {}

  bool hasPassed() const { return Clock::now() >= _moment; }

  /// What is left, 0 at least, as `poll` takes it.
  int milliseconds() const {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(_moment - Clock::now());
    return static_cast<int>(std::max<std::int64_t>(left.count(), 0));
  }

 private:
  Clock::time_point _moment;
};

/// Looks at `condition` every millisecond until it holds. False when the deadline passes first.
template <typename Condition>
[[nodiscard]] bool eventually(const Condition& condition, Deadline deadline = Deadline()) {
  while (!condition()) {
    if (deadline.hasPassed()) {
      return condition();
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

}  // namespace quennel::test
