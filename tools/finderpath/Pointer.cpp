#include "tools/finderpath/Pointer.h"

namespace quennel {

Pointer::~Pointer() {
  const auto now = place();
  // The user may have moved it meanwhile: the distance stays.
  if (_before && _moved && now) {
    moveTo({_before->x + now->x - _moved->x, _before->y + now->y - _moved->y});
  }
}

void Pointer::moveTo(Point onScreen) {
  xcb_warp_pointer(_display.connection(), XCB_NONE, _display.root(), 0, 0, 0, 0,
                   static_cast<std::int16_t>(onScreen.x), static_cast<std::int16_t>(onScreen.y));
  xcb_flush(_display.connection());
  _moved = onScreen;
}

std::optional<Point> Pointer::place() const {
  const XReply<xcb_query_pointer_reply_t> reply(xcb_query_pointer_reply(
      _display.connection(), xcb_query_pointer(_display.connection(), _display.root()), nullptr));
  return reply ? std::optional(Point{reply->root_x, reply->root_y}) : std::nullopt;
}

}  // namespace quennel
