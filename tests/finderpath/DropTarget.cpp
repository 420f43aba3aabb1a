#include "tests/finderpath/DropTarget.h"

#include <poll.h>

#include <algorithm>
#include <cstdint>
#include <utility>

namespace quennel::test {
namespace {

xcb_window_t createWindow(XDisplay& display) {
  const xcb_window_t window = xcb_generate_id(display.connection());
  constexpr std::uint32_t noEvents = 0;
  xcb_create_window(display.connection(), XCB_COPY_FROM_PARENT, window, display.root(), 50, 50, 400,
                    300, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK,
                    &noEvents);
  constexpr std::uint32_t version = 5;
  xcb_change_property(display.connection(), XCB_PROP_MODE_REPLACE, window,
                      display.atom("XdndAware"), XCB_ATOM_ATOM, 32, 1, &version);
  display.finishRequests();
  return window;
}

}  // namespace

DropTarget::DropTarget(Behaviour behaviour, std::string uri)
    : _behaviour(behaviour),
      _uri(std::move(uri)),
      _window(createWindow(*_display)),
      _thread([this] { serve(); }) {}

DropTarget::~DropTarget() {
  _ended = true;
  _thread.join();
}

void DropTarget::serve() {
  while (!_ended) {
    while (const XCBReply<xcb_generic_event_t> event{xcb_poll_for_event(_display->connection())}) {
      const int type = event->response_type & 0x7F;
      if (type == XCB_CLIENT_MESSAGE) {
        const void* message = event.get();
        handle(*static_cast<const xcb_client_message_event_t*>(message));
      } else if (type == XCB_SELECTION_NOTIFY) {
        takeAnswer();
      }
    }
    pollfd ready{_display->descriptor(), POLLIN, 0};
    poll(&ready, 1, 5);
  }
}

void DropTarget::handle(const xcb_client_message_event_t& message) {
  if (message.type == _display->atom("XdndEnter")) {
    enter(message.data.data32[0]);
  } else if (message.type == _display->atom("XdndPosition") && _behaviour != Behaviour::Ignores) {
    const std::uint32_t accepts = _behaviour == Behaviour::Refuses ? 0 : 1;
    send("XdndStatus", {_window, accepts, 0, 0, message.data.data32[4]});
  } else if (message.type == _display->atom("XdndDrop") &&
             _behaviour != Behaviour::HangsAfterDrop) {
    drop();
  }
}

void DropTarget::enter(xcb_window_t source) {
  _source = source;
  if (_behaviour == Behaviour::AsksEarly) {
    requestFile();
  }
}

void DropTarget::drop() {
  const std::string name = _display->property(_source, "XdndDirectSave0");
  const std::string uri = _uri + name + '\0';  // one file manager adds it
  xcb_change_property(_display->connection(), XCB_PROP_MODE_REPLACE, _source,
                      _display->atom("XdndDirectSave0"), _display->atom("text/plain"), 8,
                      static_cast<std::uint32_t>(uri.size()), uri.data());
  _isDropped = true;
  requestFile();
}

void DropTarget::requestFile() {
  xcb_convert_selection(_display->connection(), _window, _display->atom("XdndSelection"),
                        _display->atom("XdndDirectSave0"), _display->atom("ANSWER"),
                        XCB_CURRENT_TIME);
  xcb_flush(_display->connection());
  ++_requests;
}

void DropTarget::takeAnswer() {
  {
    const std::lock_guard lock(_mutex);
    _answers += _display->property(_window, "ANSWER");
  }
  if (--_requests == 0 && _isDropped) {
    send("XdndFinished", {_window, 1, 0});
  }
}

std::string DropTarget::answers() const {
  const std::lock_guard lock(_mutex);
  return _answers;
}

void DropTarget::send(const char* type, const std::vector<std::uint32_t>& data) {
  xcb_client_message_event_t event{};
  event.response_type = XCB_CLIENT_MESSAGE;
  event.format = 32;
  event.window = _source;
  event.type = _display->atom(type);
  std::copy(data.begin(), data.end(), event.data.data32);
  xcb_send_event(_display->connection(), 0, _source, XCB_EVENT_MASK_NO_EVENT,
                 reinterpret_cast<const char*>(&event));
  xcb_flush(_display->connection());
}

}  // namespace quennel::test
