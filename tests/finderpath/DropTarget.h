#pragma once

#include <xcb/xcb.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "finderpath/XDisplay.h"

namespace quennel::test {

/// A window that takes files by X Direct Save, as file managers do, on a connection and a thread of
/// its own.
class DropTarget {
 public:
  enum class Behaviour {
    /// Says where a dropped file goes, and asks for it.
    Saves,
    /// Does so, and asks once before the drop, too, when it has not said it yet.
    AsksEarly,
    /// Takes nothing.
    Refuses,
    /// Does not answer.
    Ignores,
    /// Takes the drop and then does not answer.
    HangsAfterDrop,
  };

  /// `uri` is that of the folder that files go to, with a slash at its end.
  DropTarget(Behaviour behaviour, std::string uri);
  DropTarget(const DropTarget&) = delete;
  DropTarget& operator=(const DropTarget&) = delete;
  ~DropTarget();

  xcb_window_t window() const { return _window; }
  /// The window of the drag that came last.
  xcb_window_t source() const { return _source; }
  /// The answers to its requests for the file.
  std::string answers() const;

 private:
  void serve();
  void handle(const xcb_client_message_event_t& message);
  void enter(xcb_window_t source);
  void drop();
  void requestFile();
  void send(const char* type, const std::vector<std::uint32_t>& data);
  void takeAnswer();

  const Behaviour _behaviour;
  const std::string _uri;
  std::unique_ptr<XDisplay> _display = XDisplay::open();
  xcb_window_t _window;
  std::atomic<xcb_window_t> _source = XCB_NONE;
  int _requests = 0;
  bool _isDropped = false;
  mutable std::mutex _mutex;
  std::string _answers;  // guarded by the mutex
  std::atomic<bool> _ended = false;
  std::thread _thread;
};

}  // namespace quennel::test
