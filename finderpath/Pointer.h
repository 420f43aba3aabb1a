#pragma once

#include <optional>

#include "finderpath/XDisplay.h"

namespace quennel {

/// The pointer of the display, held as by a real drag: while this object lives no window hears of
/// its moves. One that believes that a drag is over it may take a move for the beginning of a drag
/// of its own. As it goes, the pointer is put back where it was.
class Pointer {
 public:
  explicit Pointer(XDisplay& display);
  Pointer(const Pointer&) = delete;
  Pointer& operator=(const Pointer&) = delete;
  ~Pointer();

  /// False while another program holds it, for a menu or a drag.
  bool isHeld() const { return _isHeld; }
  void moveTo(Point onScreen);

 private:
  std::optional<Point> place() const;

  XDisplay& _display;
  bool _isHeld;
  std::optional<Point> _before;
  std::optional<Point> _moved;
};

}  // namespace quennel
