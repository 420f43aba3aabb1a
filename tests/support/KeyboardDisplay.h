#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tests/support/Process.h"

namespace quennel::test {

/// An X display in memory with nothing on it but a keyboard, which the test presses. DISPLAY is
/// left alone: whoever is to use the display is told its name.
class KeyboardDisplay {
 public:
  /// The first program that the machine lacks for this, null when all are there.
  static const char* missingProgram();

  /// Finds itself a free number, unless the display is to have one that was used before.
  explicit KeyboardDisplay(const std::string& name = {});

  /// ":99".
  const std::string& name() const { return _name; }

  /// Presses and releases keys, as xdotool names them: "ctrl+alt+n". A number is a keycode.
  void press(const std::string& keys) const;
  void pressTimes(const std::string& keys, int count) const;
  void keyDown(const std::string& keys) const;
  void keyUp(const std::string& keys) const;

  /// Like `setxkbmap -layout`.
  void setLayout(const std::string& layout, const std::vector<std::string>& more = {}) const;

  /// Runs a program on the display to its end. Throws when it fails.
  void run(const std::vector<std::string>& arguments) const;
  Process start(const std::vector<std::string>& arguments) const;

  /// Ends the display under its clients.
  void stop();

 private:
  std::string _name;
  std::optional<Process> _server;
};

}  // namespace quennel::test
