#pragma once

namespace quennel {

// Places on screen and in windows, in the units of the display. y grows downwards.

struct Point {
  int x = 0;
  int y = 0;

  bool operator==(const Point&) const = default;
};

struct Size {
  int width = 0;
  int height = 0;

  bool operator==(const Size&) const = default;
};

struct Rect {
  Point origin;
  Size size;

  bool operator==(const Rect&) const = default;
};

}  // namespace quennel
