#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/x11/XCB.h"
#include "platform/values/Geometry.h"

namespace quennel {

/// A connection to the X server. A window that has gone away reads as one without properties.
class XDisplay {
 public:
  /// Nothing when DISPLAY names no server that can be reached.
  static std::unique_ptr<XDisplay> open();

  xcb_connection_t* connection() const { return _connection.get(); }
  xcb_window_t root() const { return _root; }
  int descriptor() const { return xcb_get_file_descriptor(connection()); }

  xcb_atom_t atom(const std::string& name);
  std::string atomName(xcb_atom_t atom) const;

  /// Waits until the server has done all that was asked: it may drop what is still on its way when
  /// the connection ends.
  void finishRequests() const;

  /// The bytes of a property; empty when there is none.
  std::string property(xcb_window_t window, const std::string& name);
  /// The 32-bit items of a property: windows, atoms, numbers.
  std::vector<std::uint32_t> numbers(xcb_window_t window, const std::string& name);

  std::optional<Size> size(xcb_window_t window) const;
  /// A place in the window as a place on the screen.
  std::optional<Point> onScreen(xcb_window_t window, Point place) const;
  /// Whether it is this window that is to be seen at a place on the screen.
  bool isUncovered(xcb_window_t window, Point onScreen) const;

 private:
  XDisplay() = default;

  /// The window's frame, or itself: what stands directly on the root window.
  xcb_window_t topLevel(xcb_window_t window) const;

  XCBConnection _connection;
  xcb_window_t _root = XCB_NONE;
  std::map<std::string, xcb_atom_t> _atoms;
};

}  // namespace quennel
