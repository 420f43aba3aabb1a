#pragma once

#include <memory>

struct xcb_connection_t;

namespace quennel::bench {

/// The windows that come and go on the display that DISPLAY names.
class Screen {
 public:
  Screen();

  /// Leaves out of what is waited for what has happened so far.
  void forgetThePast();

  /// Waits until a window is there that was not there before, and until one has gone. Throws
  /// std::runtime_error when nothing happens for 20 s.
  void waitForWindow();
  void waitUntilGone();

 private:
  struct Disconnect {
    void operator()(xcb_connection_t* connection) const;
  };

  void waitForEvent(int type);

  std::unique_ptr<xcb_connection_t, Disconnect> _connection;
};

}  // namespace quennel::bench
