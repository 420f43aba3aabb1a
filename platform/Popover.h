#pragma once

#include "platform/Window.h"

namespace quennel {

/// What the interface file "InstallScriptCmdViewController" describes: a text, to stand in a
/// popover.
class InstallScriptCmdView {
 public:
  virtual ~InstallScriptCmdView() = default;

  virtual TextView& textView() = 0;
};

/// When a popover closes.
enum class PopoverBehavior {
  ApplicationDefined = 0,
  /// As soon as the user clicks elsewhere.
  Transient = 1,
};

/// The side of a rectangle that something stands at. The lower one has the smallest y where y grows
/// upwards, as it did when it was named.
enum class RectEdge { MinX = 0, MinY = 1, MaxX = 2, MaxY = 3 };

/// A small window that belongs to a place of another one. Goes before its content and its window.
class Popover {
 public:
  virtual ~Popover() = default;

  virtual void setContentView(InstallScriptCmdView& view) = 0;
  virtual void setBehavior(PopoverBehavior behavior) = 0;
  /// `rect` is a part of the window's content; the popover stands at its edge if there is room.
  virtual void showRelativeToRect(const Rect& rect, Window& ofWindow, RectEdge preferredEdge) = 0;
};

}  // namespace quennel
