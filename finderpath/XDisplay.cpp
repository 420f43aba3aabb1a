#include "finderpath/XDisplay.h"

#include <cstring>

namespace quennel {

std::unique_ptr<XDisplay> XDisplay::open() {
  int screen = 0;
  std::unique_ptr<XDisplay> display(new XDisplay);
  display->_connection.reset(xcb_connect(nullptr, &screen));
  if (xcb_connection_has_error(display->connection()) != 0) {
    return nullptr;
  }
  auto screens = xcb_setup_roots_iterator(xcb_get_setup(display->connection()));
  for (; screen > 0 && screens.rem > 1; --screen) {
    xcb_screen_next(&screens);
  }
  display->_root = screens.data->root;
  return display;
}

xcb_atom_t XDisplay::atom(const std::string& name) {
  const auto known = _atoms.find(name);
  if (known != _atoms.end()) {
    return known->second;
  }
  const auto cookie =
      xcb_intern_atom(connection(), 0, static_cast<std::uint16_t>(name.size()), name.c_str());
  const XCBReply<xcb_intern_atom_reply_t> reply(
      xcb_intern_atom_reply(connection(), cookie, nullptr));
  return _atoms[name] = reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

std::string XDisplay::atomName(xcb_atom_t atom) const {
  const XCBReply<xcb_get_atom_name_reply_t> reply(
      xcb_get_atom_name_reply(connection(), xcb_get_atom_name(connection(), atom), nullptr));
  if (!reply) {
    return {};
  }
  return {xcb_get_atom_name_name(reply.get()),
          static_cast<std::size_t>(xcb_get_atom_name_name_length(reply.get()))};
}

void XDisplay::finishRequests() const {
  const XCBReply<xcb_get_input_focus_reply_t> anyReply(
      xcb_get_input_focus_reply(connection(), xcb_get_input_focus(connection()), nullptr));
}

std::string XDisplay::property(xcb_window_t window, const std::string& name) {
  constexpr std::uint32_t longest = 65'536;  // in units of four bytes
  const auto cookie =
      xcb_get_property(connection(), 0, window, atom(name), XCB_GET_PROPERTY_TYPE_ANY, 0, longest);
  const XCBReply<xcb_get_property_reply_t> reply(
      xcb_get_property_reply(connection(), cookie, nullptr));
  if (!reply) {
    return {};
  }
  return {static_cast<const char*>(xcb_get_property_value(reply.get())),
          static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))};
}

std::vector<std::uint32_t> XDisplay::numbers(xcb_window_t window, const std::string& name) {
  const std::string bytes = property(window, name);
  std::vector<std::uint32_t> numbers(bytes.size() / sizeof(std::uint32_t));
  if (!numbers.empty()) {
    std::memcpy(numbers.data(), bytes.data(), numbers.size() * sizeof(std::uint32_t));
  }
  return numbers;
}

std::optional<Size> XDisplay::size(xcb_window_t window) const {
  const XCBReply<xcb_get_geometry_reply_t> reply(
      xcb_get_geometry_reply(connection(), xcb_get_geometry(connection(), window), nullptr));
  return reply ? std::optional(Size{reply->width, reply->height}) : std::nullopt;
}

std::optional<Point> XDisplay::onScreen(xcb_window_t window, Point place) const {
  const auto cookie =
      xcb_translate_coordinates(connection(), window, _root, static_cast<std::int16_t>(place.x),
                                static_cast<std::int16_t>(place.y));
  const XCBReply<xcb_translate_coordinates_reply_t> reply(
      xcb_translate_coordinates_reply(connection(), cookie, nullptr));
  return reply ? std::optional(Point{reply->dst_x, reply->dst_y}) : std::nullopt;
}

bool XDisplay::isUncovered(xcb_window_t window, Point onScreen) const {
  const auto cookie =
      xcb_translate_coordinates(connection(), _root, _root, static_cast<std::int16_t>(onScreen.x),
                                static_cast<std::int16_t>(onScreen.y));
  const XCBReply<xcb_translate_coordinates_reply_t> reply(
      xcb_translate_coordinates_reply(connection(), cookie, nullptr));
  return reply && reply->child == topLevel(window);
}

xcb_window_t XDisplay::topLevel(xcb_window_t window) const {
  for (;;) {
    const XCBReply<xcb_query_tree_reply_t> reply(
        xcb_query_tree_reply(connection(), xcb_query_tree(connection(), window), nullptr));
    if (!reply || reply->parent == _root || reply->parent == XCB_NONE) {
      return window;
    }
    window = reply->parent;
  }
}

}  // namespace quennel
