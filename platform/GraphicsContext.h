#pragma once

#include "platform/values/Geometry.h"

namespace quennel {

enum class Color { Black, Gray };

/// What a view draws on.
class GraphicsContext {
 public:
  virtual ~GraphicsContext() = default;

  /// The colour of what is drawn from now on.
  virtual void setColor(Color color) = 0;
  /// How wide all strokes are from now on, in every view of the process.
  virtual void setDefaultLineWidth(double width) = 0;
  virtual void strokeRect(const Rect& rect) = 0;
};

}  // namespace quennel
