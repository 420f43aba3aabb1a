#include "tests/support/XServer.h"

#include <signal.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace quennel::test {
namespace {

/// The standard output of a program run to its end, without the line end.
std::string outputOf(const std::vector<std::string>& arguments) {
  Process process(arguments);
  process.wait();
  std::string output = process.output();
  if (output.ends_with('\n')) {
    output.pop_back();
  }
  return output;
}

/// Empty when there is no such window.
std::string nameOf(const std::string& window) {
  return outputOf({"xdotool", "getwindowname", window});
}

}  // namespace

std::optional<std::string> XServer::missingProgram() {
  for (const char* const program : {"Xvfb", "openbox", "xdotool", "xprop", "import"}) {
    if (!isInstalled(program)) {
      return program;
    }
  }
  return std::nullopt;
}

XServer::XServer() {
  // Writes the number of the display that it has found free to its standard output.
  _server.emplace(std::vector<std::string>{"Xvfb", "-displayfd", "1", "-screen", "0", "1280x800x24",
                                           "-nolisten", "tcp", "-noreset"});
  if (!_server->waitForOutput("\n")) {
    throw std::runtime_error("Xvfb does not start");
  }
  const std::string output = _server->output();
  _display.emplace("DISPLAY", ":" + output.substr(0, output.find('\n')));
  _windowManager.emplace(
      std::vector<std::string>{"openbox", "--sm-disable", "--startup", "echo ready"});
  if (!_windowManager->waitForOutput("ready")) {
    throw std::runtime_error("openbox does not start");
  }
}

std::string XServer::activeWindow() const {
  // The focus itself: what the window manager calls active has it a moment later, and may be gone.
  return outputOf({"xdotool", "getwindowfocus"});
}

std::string XServer::waitForActiveWindow(const std::string& title,
                                         const std::string& otherThan) const {
  std::string window;
  const auto appears = [&] {
    window = activeWindow();
    return window != otherThan && nameOf(window) == title;
  };
  return eventually(appears) ? window : "";
}

bool XServer::isAbove(const std::string& window, const std::string& other) const {
  // From the lowest to the topmost: "..._STACKING(WINDOW): window id # 0x400007, 0x800006"
  const std::string stack = outputOf({"xprop", "-root", "_NET_CLIENT_LIST_STACKING"});
  const auto placeOf = [&stack](const std::string& number) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "0x%lx", std::stoul(number));
    return stack.find(text.data());
  };
  const std::size_t place = placeOf(window);
  const std::size_t otherPlace = placeOf(other);
  return place != std::string::npos && otherPlace != std::string::npos && place > otherPlace;
}

bool XServer::waitForNoActiveWindow(const std::string& title) const {
  return eventually([&] { return nameOf(activeWindow()) != title; });
}

std::string XServer::windowProperty(const std::string& window, const std::string& property) const {
  return outputOf({"xprop", "-id", window, property});
}

void XServer::pressKey(const std::string& key) const { outputOf({"xdotool", "key", key}); }

void XServer::type(const std::string& text) const {
  // It takes the text for what the locale says it is.
  outputOf({"env", "LC_ALL=C.UTF-8", "xdotool", "type", text});
}

void XServer::click(const std::string& window, int x, int y) const {
  outputOf({"xdotool", "mousemove", "--sync", "--window", window, std::to_string(x),
            std::to_string(y), "click", "1"});
}

std::pair<int, int> XServer::windowSize(const std::string& window) const {
  const std::string geometry = outputOf({"xdotool", "getwindowgeometry", "--shell", window});
  const auto number = [&](const std::string& key) {
    const std::size_t start = geometry.find(key);
    return start == std::string::npos ? 0 : std::atoi(geometry.c_str() + start + key.size());
  };
  return {number("WIDTH="), number("HEIGHT=")};
}

std::size_t XServer::countWindows(const std::string& title) const {
  const std::string windows =
      outputOf({"xdotool", "search", "--onlyvisible", "--name", "^" + title + "$"});
  return windows.empty()
             ? 0
             : 1 + static_cast<std::size_t>(std::count(windows.begin(), windows.end(), '\n'));
}

void XServer::moveWindow(const std::string& window, Point place) const {
  outputOf({"xdotool", "windowmove", "--sync", window, std::to_string(place.x),
            std::to_string(place.y)});
}

Point XServer::onScreen(const std::string& window, Point place) const {
  const std::string geometry = outputOf({"xdotool", "getwindowgeometry", "--shell", window});
  const auto number = [&geometry](const std::string& name) {
    return std::stoi(geometry.substr(geometry.find(name) + name.size()));
  };
  return {number("\nX=") + place.x, number("\nY=") + place.y};
}

void XServer::drag(Point from, Point to) const {
  beginDrag(from, to);
  outputOf({"xdotool", "mouseup", "1"});
}

void XServer::beginDrag(Point from, Point to) const {
  std::vector<std::string> command{"xdotool"};
  const auto moveTo = [&command](int x, int y) {
    command.insert(command.end(), {"mousemove", std::to_string(x), std::to_string(y)});
    // Programs that are dragged over answer each step.
    command.insert(command.end(), {"sleep", "0.02"});
  };
  moveTo(from.x, from.y);
  command.insert(command.end(), {"mousedown", "1"});
  constexpr int steps = 12;
  for (int step = 1; step <= steps; ++step) {
    moveTo(from.x + (to.x - from.x) * step / steps, from.y + (to.y - from.y) * step / steps);
  }
  for (int offset = 1; offset <= 4; ++offset) {
    moveTo(to.x + offset, to.y);
  }
  outputOf(command);
}

void XServer::takeScreenshot(const std::string& path) const {
  outputOf({"import", "-window", "root", path});
}

void XServer::kill() {
  _server->sendSignal(SIGKILL);
  _server->wait();
}

}  // namespace quennel::test
