#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

#include "platform/linux/keys/x11/XKB.h"
#include "platform/linux/x11/XCB.h"

namespace quennel::test {

/// Another client of the display, who takes keys away.
class OtherProgram {
 public:
  explicit OtherProgram(const std::string& display)
      : _connection(xcb_connect(display.c_str(), nullptr)) {
    if (xcb_connection_has_error(_connection.get()) != 0) {
      throw std::runtime_error("no connection to " + display);
    }
    _root = xcb_setup_roots_iterator(xcb_get_setup(_connection.get())).data->root;
  }

  /// False when somebody else has it.
  bool grabKey(xcb_keycode_t keycode, int modifiers) {
    const XCBReply<xcb_generic_error_t> error(xcb_request_check(
        _connection.get(),
        xcb_grab_key_checked(_connection.get(), 0, _root, static_cast<std::uint16_t>(modifiers),
                             keycode, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC)));
    return !error;
  }

  void ungrabKey(xcb_keycode_t keycode, int modifiers) {
    const XCBReply<xcb_generic_error_t> error(xcb_request_check(
        _connection.get(), xcb_ungrab_key_checked(_connection.get(), keycode, _root,
                                                  static_cast<std::uint16_t>(modifiers))));
  }

  /// As a program does while a menu is open.
  bool grabKeyboard() {
    const XCBReply<xcb_grab_keyboard_reply_t> reply(
        xcb_grab_keyboard_reply(_connection.get(),
                                xcb_grab_keyboard(_connection.get(), 0, _root, XCB_CURRENT_TIME,
                                                  XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC),
                                nullptr));
    return reply && reply->status == XCB_GRAB_STATUS_SUCCESS;
  }

  void ungrabKeyboard() {
    xcb_ungrab_keyboard(_connection.get(), XCB_CURRENT_TIME);
    synchronize();
  }

  /// Sets the locks of the keyboard, without a key.
  void lockModifiers(unsigned modifiers) {
    useKeyboardExtension();
    xcb_xkb_latch_lock_state(_connection.get(), XCB_XKB_ID_USE_CORE_KBD, 0xFF,
                             static_cast<std::uint8_t>(modifiers), 0, 0, 0, 0, 0);
    synchronize();
  }

  /// Makes the layout of that number, from 0, the one in force.
  void lockLayout(unsigned layout) {
    useKeyboardExtension();
    xcb_xkb_latch_lock_state(_connection.get(), XCB_XKB_ID_USE_CORE_KBD, 0, 0, 1,
                             static_cast<std::uint8_t>(layout), 0, 0, 0);
    synchronize();
  }

 private:
  void useKeyboardExtension() {
    const XCBReply<xcb_xkb_use_extension_reply_t> reply(xcb_xkb_use_extension_reply(
        _connection.get(), xcb_xkb_use_extension(_connection.get(), 1, 0), nullptr));
  }

  void synchronize() {
    const XCBReply<xcb_get_input_focus_reply_t> reply(xcb_get_input_focus_reply(
        _connection.get(), xcb_get_input_focus(_connection.get()), nullptr));
  }

  XCBConnection _connection;
  xcb_window_t _root;
};

}  // namespace quennel::test
