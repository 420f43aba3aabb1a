#pragma once

#include <systemd/sd-event.h>

#include <memory>
#include <vector>

#include "platform/RunLoop.h"
#include "platform/linux/events/EventSource.h"
#include "platform/linux/keys/HotKeyBackend.h"
#include "platform/linux/keys/x11/X11Keyboard.h"
#include "platform/linux/x11/XCB.h"

namespace quennel {

/// Keys grabbed from an X server.
///
/// A combination follows the layout: when the user switches it, its keys are grabbed where they are
/// now. Where someone else holds that place the combination stays bound, but silent, until the next
/// switch finds it a free one.
class X11HotKeys final : public HotKeyBackend {
 public:
  /// Connects to the display that DISPLAY names. Null, with the reason, when that fails. Neither
  /// `event`, which `runLoop` is made of, nor the other two are owned.
  static std::unique_ptr<X11HotKeys> open(sd_event* event, RunLoop& runLoop,
                                          HotKeyListener& listener, Error* error);
  X11HotKeys(const X11HotKeys&) = delete;
  X11HotKeys& operator=(const X11HotKeys&) = delete;
  ~X11HotKeys() override;

  bool bind(const Request& request, Error* error) override;
  void unbind(HotKeyNumber number) override;
  bool isAlive() const override { return _connection != nullptr; }

 private:
  enum class State { Grabbed, Silent };
  struct Binding {
    HotKeyNumber number;
    KeyCombination combination;
    X11KeyPlace place;
    State state;
  };

  X11HotKeys(RunLoop& runLoop, HotKeyListener& listener, XCBConnection connection,
             xcb_window_t root);

  bool start(sd_event* event);
  bool startKeyboardExtension();
  bool watchConnection(sd_event* event);

  bool grab(const X11KeyPlace& place);
  void ungrab(const X11KeyPlace& place);
  bool isTaken(const X11KeyPlace& place) const;

  void takeEvents();
  void takeEvent(const xcb_generic_event_t& event);
  void takeKeyPress(const xcb_key_press_event_t& event);
  void takeKeyRelease(const xcb_key_release_event_t& event);
  void followKeyboardLater();
  void followKeyboard();
  std::vector<Binding*> bindingsThatMove(const X11Keyboard& keyboard);
  void endIfGone();

  RunLoop& _runLoop;
  HotKeyListener& _listener;
  XCBConnection _connection;
  EventSource _source;
  xcb_window_t _root;
  std::uint8_t _keyboardEvent = 0;
  X11Keyboard _keyboard;
  std::vector<Binding> _bindings;
  /// The key that was pressed last and is still down, 0 when none is: its presses are repetitions.
  xcb_keycode_t _heldKey = 0;
  /// The key whose press made the server send us all keys, until it is released.
  xcb_keycode_t _grabbingKey = 0;
  /// Counts the changes of the keyboard. Shared with the work that waits for them to end.
  std::shared_ptr<unsigned> _changes = std::make_shared<unsigned>(0);
};

}  // namespace quennel
