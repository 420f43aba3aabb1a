#pragma once

#include <memory>

#include "platform/values/Geometry.h"

namespace quennel {

/// A picture of the user interface. Main thread only; gone before the last thing on screen is.
class Image {
 public:
  virtual ~Image() = default;

  virtual Size size() const = 0;

  /// The picture drawn in another size.
  virtual std::shared_ptr<const Image> resized(Size size) const = 0;

  /// The picture drawn at the origin of an empty one of the same size, with so much of its opacity
  /// (0 to 1).
  virtual std::shared_ptr<const Image> dissolved(double fraction) const = 0;
};

}  // namespace quennel
