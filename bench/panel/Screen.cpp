#include "bench/panel/Screen.h"

#include <poll.h>
#include <xcb/xcb.h>

#include <cstdint>
#include <cstdlib>
#include <stdexcept>

namespace quennel::bench {

void Screen::Disconnect::operator()(xcb_connection_t* connection) const {
  xcb_disconnect(connection);
}

namespace {

struct Free {
  void operator()(xcb_generic_event_t* event) const { std::free(event); }
};

using Event = std::unique_ptr<xcb_generic_event_t, Free>;

}  // namespace

Screen::Screen() : _connection(xcb_connect(nullptr, nullptr)) {
  if (xcb_connection_has_error(_connection.get()) != 0) {
    throw std::runtime_error("the display does not answer");
  }
  const auto root = xcb_setup_roots_iterator(xcb_get_setup(_connection.get())).data->root;
  const std::uint32_t events = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
  xcb_change_window_attributes(_connection.get(), root, XCB_CW_EVENT_MASK, &events);
  xcb_flush(_connection.get());
}

void Screen::forgetThePast() {
  while (Event(xcb_poll_for_event(_connection.get()))) {
  }
}

void Screen::waitForWindow() { waitForEvent(XCB_MAP_NOTIFY); }

void Screen::waitUntilGone() { waitForEvent(XCB_UNMAP_NOTIFY); }

void Screen::waitForEvent(int type) {
  for (;;) {
    const Event event(xcb_poll_for_event(_connection.get()));
    if (event && (event->response_type & 0x7f) == type) {
      return;
    }
    pollfd polled{xcb_get_file_descriptor(_connection.get()), POLLIN, 0};
    if (!event && poll(&polled, 1, 20'000) <= 0) {
      throw std::runtime_error("no window came or went within 20 s");
    }
  }
}

}  // namespace quennel::bench
