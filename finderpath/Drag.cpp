#include "finderpath/Drag.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <vector>

#include "finderpath/DragOffer.h"

namespace quennel {
namespace {

using Clock = std::chrono::steady_clock;

/// File managers answer within a few milliseconds, on a busy machine within a second. One that
/// hangs is not worth waiting for: the pointer is held meanwhile.
constexpr std::chrono::milliseconds patience{1500};
constexpr std::uint32_t newestVersion = 5;

/// A window that nobody sees and that hears of changes of its properties.
xcb_window_t createSource(const XDisplay& display) {
  const xcb_window_t window = xcb_generate_id(display.connection());
  constexpr std::array<std::uint32_t, 2> values{1, XCB_EVENT_MASK_PROPERTY_CHANGE};
  xcb_create_window(display.connection(), XCB_COPY_FROM_PARENT, window, display.root(), -1, -1, 1,
                    1, 0, XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT,
                    XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values.data());
  return window;
}

std::uint32_t packed(Point point) {
  return static_cast<std::uint32_t>(point.x) << 16 | (static_cast<std::uint32_t>(point.y) & 0xFFFF);
}

}  // namespace

// While the target may still come to write to the window, that has to be there, even when this
// program is ended: some programs do not survive it when it is gone.
Drag::Drag(XDisplay& display, DragOffer& offer)
    : _display(display), _offer(offer), _source(createSource(display)) {
  xcb_set_close_down_mode(_display.connection(), XCB_CLOSE_DOWN_RETAIN_TEMPORARY);
}

Drag::~Drag() {
  if (isSettled() || _target == XCB_NONE) {
    xcb_destroy_window(_display.connection(), _source);
    xcb_set_close_down_mode(_display.connection(), XCB_CLOSE_DOWN_DESTROY_ALL);
  }
  _display.finishRequests();
}

std::optional<std::string> Drag::folderAt(xcb_window_t window, Point place) {
  const auto onScreen = _display.onScreen(window, place);
  if (!onScreen || !start(window)) {
    return std::nullopt;
  }
  enter(*onScreen);
  const bool answered = waitUntil([this] { return _state != State::Entered; });
  if (!answered || _state == State::Refused) {
    leave();
    return std::nullopt;
  }
  drop();
  waitUntil([this] {
    // Where the answer comes by another way, it may come later than the end of the drag.
    return _state == State::Finished && (_offer.folder() || _offer.descriptor() < 0);
  });
  return _offer.folder();
}

/// False when the window takes no drags at all.
bool Drag::start(xcb_window_t window) {
  const auto aware = _display.numbers(window, "XdndAware");
  if (aware.empty()) {
    return false;
  }
  _target = window;
  _version = std::min(aware.front(), newestVersion);
  std::vector<xcb_atom_t> types;
  for (const std::string& type : _offer.types()) {
    types.push_back(_display.atom(type));
  }
  // The event that this change causes tells the time.
  xcb_change_property(_display.connection(), XCB_PROP_MODE_REPLACE, _source,
                      _display.atom("XdndTypeList"), XCB_ATOM_ATOM, 32,
                      static_cast<std::uint32_t>(types.size()), types.data());
  _offer.begin(_source);
  return waitUntil([this] { return _time != 0; });
}

void Drag::enter(Point onScreen) {
  xcb_set_selection_owner(_display.connection(), _source, _display.atom("XdndSelection"), _time);
  std::array<std::uint32_t, 3> types{};
  const auto offered = _offer.types();
  std::transform(offered.begin(),
                 offered.begin() + std::min<std::ptrdiff_t>(3, std::ssize(offered)), types.begin(),
                 [this](const std::string& type) { return _display.atom(type); });
  send("XdndEnter", {_source, _version << 24, types[0], types[1], types[2]});
  send("XdndPosition", {_source, 0, packed(onScreen), _time, _display.atom("XdndActionCopy")});
}

void Drag::drop() { send("XdndDrop", {_source, 0, _time}); }

void Drag::leave() { send("XdndLeave", {_source}); }

void Drag::send(const char* type, std::initializer_list<std::uint32_t> data) {
  xcb_client_message_event_t event{};
  event.response_type = XCB_CLIENT_MESSAGE;
  event.format = 32;
  event.window = _target;
  event.type = _display.atom(type);
  std::copy(data.begin(), data.end(), event.data.data32);
  xcb_send_event(_display.connection(), 0, _target, XCB_EVENT_MASK_NO_EVENT,
                 reinterpret_cast<const char*>(&event));
  xcb_flush(_display.connection());
}

/// False when `condition` does not come to hold in time, or the X server has gone away.
bool Drag::waitUntil(const std::function<bool()>& condition) {
  const auto deadline = Clock::now() + patience;
  for (;;) {
    handleEvents();
    _offer.serve();
    if (condition()) {
      return true;
    }
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
    if (left.count() <= 0 || xcb_connection_has_error(_display.connection()) != 0) {
      return false;
    }
    xcb_flush(_display.connection());
    std::array<pollfd, 2> ready{
        {{_display.descriptor(), POLLIN, 0}, {_offer.descriptor(), POLLIN, 0}}};
    poll(ready.data(), ready.size(), static_cast<int>(left.count()));
  }
}

void Drag::handleEvents() {
  while (const XCBReply<xcb_generic_event_t> event{xcb_poll_for_event(_display.connection())}) {
    constexpr unsigned withoutSentFlag = 0x7F;
    const void* raw = event.get();
    switch (event->response_type & withoutSentFlag) {
      case XCB_PROPERTY_NOTIFY:
        _time = static_cast<const xcb_property_notify_event_t*>(raw)->time;
        break;
      case XCB_CLIENT_MESSAGE:
        handle(*static_cast<const xcb_client_message_event_t*>(raw));
        break;
      case XCB_SELECTION_REQUEST:
        answer(*static_cast<const xcb_selection_request_event_t*>(raw));
        break;
      default:
        break;
    }
  }
}

void Drag::handle(const xcb_client_message_event_t& message) {
  if (message.window != _source || message.data.data32[0] != _target) {
    return;
  }
  if (message.type == _display.atom("XdndStatus") && _state == State::Entered) {
    _state = (message.data.data32[1] & 1) != 0 ? State::Accepted : State::Refused;
  } else if (message.type == _display.atom("XdndFinished")) {
    _state = State::Finished;
  }
}

void Drag::answer(const xcb_selection_request_event_t& request) {
  xcb_selection_notify_event_t event{};
  event.response_type = XCB_SELECTION_NOTIFY;
  event.time = request.time;
  event.requestor = request.requestor;
  event.selection = request.selection;
  event.target = request.target;
  if (const auto data = _offer.dataForType(_display.atomName(request.target))) {
    event.property = request.property != XCB_ATOM_NONE ? request.property : request.target;
    xcb_change_property(_display.connection(), XCB_PROP_MODE_REPLACE, request.requestor,
                        event.property, request.target, 8, static_cast<std::uint32_t>(data->size()),
                        data->data());
  }
  xcb_send_event(_display.connection(), 0, request.requestor, XCB_EVENT_MASK_NO_EVENT,
                 reinterpret_cast<const char*>(&event));
  xcb_flush(_display.connection());
}

}  // namespace quennel
