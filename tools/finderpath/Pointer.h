#pragma once

#include <optional>

#include "tools/finderpath/XDisplay.h"

namespace quennel {

/// The pointer of the display, put back where it was as this object goes.
class Pointer {
 public:
  explicit Pointer(XDisplay& display) : _display(display), _before(place()) {}
  Pointer(const Pointer&) = delete;
  Pointer& operator=(const Pointer&) = delete;
  ~Pointer();

  void moveTo(Point onScreen);

 private:
  std::optional<Point> place() const;

  XDisplay& _display;
  std::optional<Point> _before;
  std::optional<Point> _moved;
};

}  // namespace quennel
