#include "bench/keys/Keyboard.h"

#include <xcb/xtest.h>

#include <cstdlib>
#include <stdexcept>

namespace quennel::bench {

namespace {

constexpr std::uint8_t control = 37;
constexpr std::uint8_t alt = 64;

}  // namespace

Keyboard::Keyboard(const std::string& display)
    : _connection(xcb_connect(display.c_str(), nullptr)) {
  if (xcb_connection_has_error(_connection.get())) {
    throw std::runtime_error("the display cannot be reached");
  }
}

void Keyboard::press(std::uint8_t key) {
  for (const std::uint8_t each : {control, alt, key}) {
    send(XCB_KEY_PRESS, each);
  }
  xcb_flush(_connection.get());
}

void Keyboard::release(std::uint8_t key) {
  for (const std::uint8_t each : {key, alt, control}) {
    send(XCB_KEY_RELEASE, each);
  }
  // The answer says that the display has got here.
  std::free(xcb_get_input_focus_reply(_connection.get(), xcb_get_input_focus(_connection.get()),
                                      nullptr));
}

void Keyboard::send(std::uint8_t event, std::uint8_t key) {
  xcb_test_fake_input(_connection.get(), event, key, XCB_CURRENT_TIME, XCB_WINDOW_NONE, 0, 0, 0);
}

}  // namespace quennel::bench
