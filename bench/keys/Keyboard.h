#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <memory>
#include <string>

namespace quennel::bench {

/// The keyboard of an X display: presses keys faster than a program that is started for each.
class Keyboard {
 public:
  explicit Keyboard(const std::string& display);

  /// Presses the key of that code with Control and Alt.
  void press(std::uint8_t key);
  /// Lets all three go.
  void release(std::uint8_t key);

 private:
  struct Disconnect {
    void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
  };

  void send(std::uint8_t event, std::uint8_t key);

  std::unique_ptr<xcb_connection_t, Disconnect> _connection;
};

}  // namespace quennel::bench
