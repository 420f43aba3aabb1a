#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <optional>
#include <string>

#include "finderpath/XDisplay.h"

namespace quennel {

class DragOffer;

/// One drag and drop that no pointer makes: it tells a window, by the protocol of real drags
/// (XDND), that something is dropped at a place, and hears where that would go. Nothing is handed
/// over, so nothing changes.
class Drag {
 public:
  /// Both are used until the drag is gone.
  Drag(XDisplay& display, DragOffer& offer);
  Drag(const Drag&) = delete;
  Drag& operator=(const Drag&) = delete;
  ~Drag();

  /// The folder that a file dropped at this place of the window goes into; nothing when the window
  /// takes none there or does not answer in time. To be called once.
  std::optional<std::string> folderAt(xcb_window_t window, Point place);

  /// Whether the window has dealt with the drag. One that has not is too busy to be asked again.
  bool isSettled() const { return _state == State::Refused || _state == State::Finished; }

 private:
  enum class State { Entered, Refused, Accepted, Finished };

  bool start(xcb_window_t window);
  void enter(Point onScreen);
  void drop();
  void leave();
  void send(const char* type, std::initializer_list<std::uint32_t> data);

  bool waitUntil(const std::function<bool()>& condition);
  void handleEvents();
  void handle(const xcb_client_message_event_t& message);
  void answer(const xcb_selection_request_event_t& request);

  XDisplay& _display;
  DragOffer& _offer;
  xcb_window_t _source;
  xcb_window_t _target = XCB_NONE;
  std::uint32_t _version = 0;
  /// The server's time, which the protocol wants; 0 until it is known.
  xcb_timestamp_t _time = 0;
  State _state = State::Entered;
};

}  // namespace quennel
