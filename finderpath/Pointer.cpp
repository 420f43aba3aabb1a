#include "finderpath/Pointer.h"

namespace quennel {
namespace {

bool hold(const XDisplay& display) {
  const auto cookie = xcb_grab_pointer(display.connection(), 0, display.root(),
                                       XCB_EVENT_MASK_NO_EVENT, XCB_GRAB_MODE_ASYNC,
                                       XCB_GRAB_MODE_ASYNC, XCB_NONE, XCB_NONE, XCB_CURRENT_TIME);
  const XCBReply<xcb_grab_pointer_reply_t> reply(
      xcb_grab_pointer_reply(display.connection(), cookie, nullptr));
  return reply && reply->status == XCB_GRAB_STATUS_SUCCESS;
}

}  // namespace

Pointer::Pointer(XDisplay& display) : _display(display), _isHeld(hold(display)), _before(place()) {}

Pointer::~Pointer() {
  const auto now = place();
  // The user may have moved it meanwhile: the distance stays.
  if (_before && _moved && now) {
    moveTo({_before->x + now->x - _moved->x, _before->y + now->y - _moved->y});
  }
  if (_isHeld) {
    xcb_ungrab_pointer(_display.connection(), XCB_CURRENT_TIME);
  }
  _display.finishRequests();
}

void Pointer::moveTo(Point onScreen) {
  xcb_warp_pointer(_display.connection(), XCB_NONE, _display.root(), 0, 0, 0, 0,
                   static_cast<std::int16_t>(onScreen.x), static_cast<std::int16_t>(onScreen.y));
  xcb_flush(_display.connection());
  _moved = onScreen;
}

std::optional<Point> Pointer::place() const {
  const XCBReply<xcb_query_pointer_reply_t> reply(xcb_query_pointer_reply(
      _display.connection(), xcb_query_pointer(_display.connection(), _display.root()), nullptr));
  return reply ? std::optional(Point{reply->root_x, reply->root_y}) : std::nullopt;
}

}  // namespace quennel
