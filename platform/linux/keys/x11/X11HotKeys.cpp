#include "platform/linux/keys/x11/X11HotKeys.h"

#include <sys/epoll.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <optional>
#include <utility>

namespace quennel {
namespace {

/// A change of layout comes as a burst of events.
constexpr std::chrono::milliseconds layoutSettles{100};

constexpr unsigned allModifiers = 0xFF;
/// The bit of an event's type that tells who sent it.
constexpr std::uint8_t typeMask = 0x7F;

xcb_window_t rootOfScreen(xcb_connection_t* connection, int number) {
  auto screen = xcb_setup_roots_iterator(xcb_get_setup(connection));
  for (; screen.rem > 1 && number > 0; --number) {
    xcb_screen_next(&screen);
  }
  return screen.data->root;
}

bool contains(const std::vector<xcb_keycode_t>& keycodes, xcb_keycode_t keycode) {
  return std::ranges::find(keycodes, keycode) != keycodes.end();
}

}  // namespace

std::unique_ptr<X11HotKeys> X11HotKeys::open(sd_event* event, RunLoop& runLoop,
                                             HotKeyListener& listener, Error* error) {
  int screen = 0;
  XCBConnection connection(xcb_connect(nullptr, &screen));
  if (xcb_connection_has_error(connection.get()) != 0) {
    failWith(error, ECONNREFUSED, Error::Kind::UnreachableDisplay);
    return nullptr;
  }
  const xcb_window_t root = rootOfScreen(connection.get(), screen);
  std::unique_ptr<X11HotKeys> hotKeys(
      new X11HotKeys(runLoop, listener, std::move(connection), root));
  if (!hotKeys->start(event)) {
    failWith(error, ENOTSUP, Error::Kind::SilentKeyboard);
    return nullptr;
  }
  return hotKeys;
}

X11HotKeys::X11HotKeys(RunLoop& runLoop, HotKeyListener& listener, XCBConnection connection,
                       xcb_window_t root)
    : _runLoop(runLoop), _listener(listener), _connection(std::move(connection)), _root(root) {}

X11HotKeys::~X11HotKeys() = default;

bool X11HotKeys::start(sd_event* event) {
  if (!startKeyboardExtension()) {
    return false;
  }
  const auto keyboard = X11Keyboard::read(_connection.get());
  if (!keyboard || !watchConnection(event)) {
    return false;
  }
  _keyboard = *keyboard;
  takeEvents();
  return isAlive();
}

/// The core protocol would do for grabs, but tells neither a key that is held from one that is
/// pressed anew nor, once a client has used this extension, of another layout.
bool X11HotKeys::startKeyboardExtension() {
  xcb_connection_t* const connection = _connection.get();
  const xcb_query_extension_reply_t* const extension =
      xcb_get_extension_data(connection, &xcb_xkb_id);
  if (!extension || extension->present == 0) {
    return false;
  }
  _keyboardEvent = extension->first_event;
  const XCBReply<xcb_xkb_use_extension_reply_t> use(xcb_xkb_use_extension_reply(
      connection, xcb_xkb_use_extension(connection, XCB_XKB_MAJOR_VERSION, XCB_XKB_MINOR_VERSION),
      nullptr));
  if (!use || use->supported == 0) {
    return false;
  }
  constexpr std::uint16_t events =
      XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY;
  constexpr std::uint16_t parts =
      XCB_XKB_MAP_PART_KEY_TYPES | XCB_XKB_MAP_PART_KEY_SYMS | XCB_XKB_MAP_PART_MODIFIER_MAP;
  xcb_xkb_select_events(connection, XCB_XKB_ID_USE_CORE_KBD, events, 0, events, parts, parts,
                        nullptr);
  constexpr std::uint32_t noReleaseWhenRepeated = XCB_XKB_PER_CLIENT_FLAG_DETECTABLE_AUTO_REPEAT;
  const XCBReply<xcb_xkb_per_client_flags_reply_t> flags(xcb_xkb_per_client_flags_reply(
      connection,
      xcb_xkb_per_client_flags(connection, XCB_XKB_ID_USE_CORE_KBD, noReleaseWhenRepeated,
                               noReleaseWhenRepeated, 0, 0, 0),
      nullptr));
  return flags && (flags->value & noReleaseWhenRepeated) != 0;
}

bool X11HotKeys::watchConnection(sd_event* event) {
  const auto takeEvents = [](sd_event_source*, int, std::uint32_t, void* self) {
    static_cast<X11HotKeys*>(self)->takeEvents();
    return 0;
  };
  sd_event_source* source = nullptr;
  const int descriptor = xcb_get_file_descriptor(_connection.get());
  if (sd_event_add_io(event, &source, descriptor, EPOLLIN, takeEvents, this) < 0) {
    return false;
  }
  _source.reset(source);
  return true;
}

bool X11HotKeys::bind(const Request& request, Error* error) {
  const X11KeyPlace place = _keyboard.placeOf(request.combination);
  if (place.keycodes.empty()) {
    return failWith(error, ENOENT, Error::Kind::UnknownKey);
  }
  const bool isFree = !isTaken(place) && grab(place);
  if (isFree) {
    _bindings.push_back({request.number, request.combination, place, State::Grabbed});
  }
  takeEvents();  // what came with the answers shows on no descriptor any more
  if (!isAlive()) {
    return failWith(error, ECONNREFUSED, Error::Kind::UnreachableDisplay);
  }
  return isFree || failWith(error, EBUSY, Error::Kind::CombinationInUse);
}

void X11HotKeys::unbind(HotKeyNumber number) {
  const auto binding = std::ranges::find(_bindings, number, &Binding::number);
  if (binding == _bindings.end()) {
    return;
  }
  if (binding->state == State::Grabbed) {
    ungrab(binding->place);
    xcb_flush(_connection.get());
  }
  _bindings.erase(binding);
}

/// Grabs all of it or nothing.
bool X11HotKeys::grab(const X11KeyPlace& place) {
  std::vector<xcb_void_cookie_t> cookies;
  for (const xcb_keycode_t keycode : place.keycodes) {
    for (const std::uint16_t locks : _keyboard.lockStates()) {
      cookies.push_back(xcb_grab_key_checked(_connection.get(), 0, _root,
                                             static_cast<std::uint16_t>(place.modifiers | locks),
                                             keycode, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
    }
  }
  bool isGrabbed = true;
  for (const xcb_void_cookie_t cookie : cookies) {
    const XCBReply<xcb_generic_error_t> failure(xcb_request_check(_connection.get(), cookie));
    isGrabbed = isGrabbed && !failure;
  }
  if (!isGrabbed) {
    ungrab(place);
    xcb_flush(_connection.get());
  }
  return isGrabbed;
}

void X11HotKeys::ungrab(const X11KeyPlace& place) {
  for (const xcb_keycode_t keycode : place.keycodes) {
    for (const std::uint16_t locks : _keyboard.lockStates()) {
      xcb_ungrab_key(_connection.get(), keycode, _root,
                     static_cast<std::uint16_t>(place.modifiers | locks));
    }
  }
}

/// The server lets one client grab a key as often as it likes.
bool X11HotKeys::isTaken(const X11KeyPlace& place) const {
  return std::ranges::any_of(_bindings, [&](const Binding& binding) {
    return binding.state == State::Grabbed && binding.place.modifiers == place.modifiers &&
           std::ranges::any_of(place.keycodes, [&](xcb_keycode_t keycode) {
             return contains(binding.place.keycodes, keycode);
           });
  });
}

void X11HotKeys::takeEvents() {
  if (!isAlive()) {
    return;
  }
  while (const XCBReply<xcb_generic_event_t> event{xcb_poll_for_event(_connection.get())}) {
    takeEvent(*event);
  }
  endIfGone();
}

void X11HotKeys::takeEvent(const xcb_generic_event_t& event) {
  const auto type = static_cast<std::uint8_t>(event.response_type & typeMask);
  if (type == XCB_KEY_PRESS) {
    takeKeyPress(reinterpret_cast<const xcb_key_press_event_t&>(event));
  } else if (type == XCB_KEY_RELEASE) {
    takeKeyRelease(reinterpret_cast<const xcb_key_release_event_t&>(event));
  } else if (type == _keyboardEvent) {
    followKeyboardLater();  // only changes of the map have been asked for
  }
}

void X11HotKeys::takeKeyPress(const xcb_key_press_event_t& event) {
  if (event.detail == _heldKey) {
    return;
  }
  _heldKey = event.detail;
  _grabbingKey = _grabbingKey != 0 ? _grabbingKey : event.detail;
  const unsigned modifiers = event.state & allModifiers & ~unsigned{_keyboard.lockModifiers()};
  for (const Binding& binding : _bindings) {
    if (binding.state == State::Grabbed && binding.place.modifiers == modifiers &&
        contains(binding.place.keycodes, event.detail)) {
      return _listener.hotKeyPressed(binding.number);
    }
  }
}

/// With the key whose press began it, the sending of all keys ends, releases of others included.
void X11HotKeys::takeKeyRelease(const xcb_key_release_event_t& event) {
  if (event.detail == _grabbingKey) {
    _grabbingKey = 0;
    _heldKey = 0;
  } else if (event.detail == _heldKey) {
    _heldKey = 0;
  }
}

void X11HotKeys::followKeyboardLater() {
  const unsigned change = ++*_changes;
  _runLoop.dispatchAfter(layoutSettles,
                         [this, change, changes = std::weak_ptr<const unsigned>(_changes)] {
                           const auto latest = changes.lock();
                           if (latest && *latest == change && isAlive()) {
                             followKeyboard();
                           }
                         });
}

/// Touches nothing that stays where it is: while a window manager moves its own keys, theirs are
/// free for a moment, and grabbing what was refused before would take them away.
void X11HotKeys::followKeyboard() {
  const auto keyboard = X11Keyboard::read(_connection.get());
  if (keyboard && *keyboard != _keyboard) {
    const auto moving = bindingsThatMove(*keyboard);
    for (const Binding* binding : moving) {
      if (binding->state == State::Grabbed) {
        ungrab(binding->place);
      }
    }
    _keyboard = *keyboard;
    for (Binding* binding : moving) {
      binding->state = State::Silent;
      binding->place = _keyboard.placeOf(binding->combination);
    }
    for (Binding* binding : moving) {
      if (!binding->place.keycodes.empty() && !isTaken(binding->place) && grab(binding->place)) {
        binding->state = State::Grabbed;
      }
    }
    xcb_flush(_connection.get());
  }
  takeEvents();
}

std::vector<X11HotKeys::Binding*> X11HotKeys::bindingsThatMove(const X11Keyboard& keyboard) {
  std::vector<Binding*> moving;
  const bool locksMove = keyboard.lockModifiers() != _keyboard.lockModifiers();
  for (Binding& binding : _bindings) {
    if (locksMove || keyboard.placeOf(binding.combination) != binding.place) {
      moving.push_back(&binding);
    }
  }
  return moving;
}

void X11HotKeys::endIfGone() {
  if (xcb_connection_has_error(_connection.get()) == 0) {
    return;
  }
  _source.reset();
  _connection.reset();
  for (const Binding& binding : std::exchange(_bindings, {})) {
    _listener.hotKeyLost(binding.number);
  }
}

}  // namespace quennel
