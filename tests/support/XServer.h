#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/values/Geometry.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/Process.h"

namespace quennel::test {

/// An X display in memory, with a window manager, that the test has for itself. DISPLAY names it
/// while it lives.
class XServer {
 public:
  /// The first program that the machine lacks for this; nothing when all are there.
  static std::optional<std::string> missingProgram();

  XServer();

  /// The window that has the keyboard.
  std::string activeWindow() const;

  /// Waits until a window of that title, and not `otherThan`, has the keyboard. Empty when that
  /// does not come about.
  std::string waitForActiveWindow(const std::string& title,
                                  const std::string& otherThan = {}) const;

  /// Whether the one window stands above the other.
  bool isAbove(const std::string& window, const std::string& other) const;

  /// Waits until no window of that title has the keyboard.
  [[nodiscard]] bool waitForNoActiveWindow(const std::string& title) const;

  /// A property of the window as xprop shows it.
  std::string windowProperty(const std::string& window, const std::string& property) const;

  /// Presses a key, such as "Return", as the user of the display.
  void pressKey(const std::string& key) const;

  /// Types the text.
  void type(const std::string& text) const;

  /// Clicks the window with the left button, so many pixels from its left and its top.
  void click(const std::string& window, int x, int y) const;

  /// Puts the window's left upper corner there.
  void moveWindow(const std::string& window, Point place) const;

  /// A place in the window as one on the screen.
  Point onScreen(const std::string& window, Point place) const;

  /// Presses the left button at one place of the screen and lets it go at another, by a way of
  /// several steps.
  void drag(Point from, Point to) const;
  /// The same without letting it go.
  void beginDrag(Point from, Point to) const;

  /// Width and height of the window, in pixels.
  std::pair<int, int> windowSize(const std::string& window) const;

  /// How many windows of exactly that title are on the screen.
  std::size_t countWindows(const std::string& title) const;

  /// Writes a picture of the screen, as PNG.
  void takeScreenshot(const std::string& path) const;

  /// Ends the display under its clients.
  void kill();

 private:
  std::optional<Process> _server;
  std::optional<EnvironmentVariable> _display;
  std::optional<Process> _windowManager;
};

}  // namespace quennel::test
