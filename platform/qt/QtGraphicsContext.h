#pragma once

#include "platform/GraphicsContext.h"

class QPainter;

namespace quennel {

/// Draws on a widget of the toolkit.
class QtGraphicsContext : public GraphicsContext {
 public:
  /// `painter` is not owned.
  explicit QtGraphicsContext(QPainter& painter) : _painter(painter) {}

  void setColor(Color color) override;
  void setDefaultLineWidth(double width) override { _defaultLineWidth = width; }
  void strokeRect(const Rect& rect) override;

 private:
  static double _defaultLineWidth;

  QPainter& _painter;
  Color _color = Color::Black;
};

}  // namespace quennel
