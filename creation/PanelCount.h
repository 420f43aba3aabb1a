#pragma once

#include <cstdint>

namespace quennel {

/// The number of panels and alerts that keep the helper from quitting after a request. Whoever
/// shows one raises it before and lowers it afterwards, but where the helper is meant to stay.
class PanelCount {
 public:
  PanelCount() = default;
  PanelCount(const PanelCount&) = delete;
  PanelCount& operator=(const PanelCount&) = delete;

  std::int64_t value() const { return _value; }
  void set(std::int64_t value) { _value = value; }
  void raise() { ++_value; }
  void lower() { --_value; }

 private:
  std::int64_t _value = 0;
};

}  // namespace quennel
