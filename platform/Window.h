#pragma once

#include <optional>
#include <string>

#include "platform/values/Geometry.h"

namespace quennel {

/// Something in a window. Main thread only, like all that is on screen.
class View {
 public:
  virtual ~View() = default;

  /// Where it is in the window's content.
  virtual Rect frame() const = 0;
};

/// A line of text that the user can read.
class TextField {
 public:
  virtual ~TextField() = default;

  virtual void setStringValue(const std::string& text) = 0;
  /// What is shown when the pointer rests on it.
  virtual void setToolTip(const std::string& text) = 0;
  virtual std::string toolTip() const = 0;
};

/// A text of several lines that the user can read, select and copy.
class TextView {
 public:
  virtual ~TextView() = default;

  virtual void setString(const std::string& text) = 0;
  /// The font in which the user wants characters to be of equal width; `size` in points.
  virtual void setUserFixedPitchFont(double size) = 0;
};

class Window {
 public:
  virtual ~Window() = default;

  virtual void setTitle(const std::string& title) = 0;
  /// Closes the window as if the user had done it.
  virtual void close() = 0;

  /// Where it is on screen, with its title bar and borders.
  virtual Rect frame() const = 0;
  /// What `frame` would be around a content of this place and size.
  virtual Rect frameRectForContentRect(const Rect& content) const = 0;
};

}  // namespace quennel
