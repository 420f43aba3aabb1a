#include "tests/support/KeyboardDisplay.h"

#include <signal.h>

#include <stdexcept>

namespace quennel::test {

const char* KeyboardDisplay::missingProgram() {
  for (const char* const program : {"Xvfb", "xdotool", "setxkbmap", "xset"}) {
    if (!isInstalled(program)) {
      return program;
    }
  }
  return nullptr;
}

KeyboardDisplay::KeyboardDisplay(const std::string& name) {
  std::vector<std::string> arguments = {"Xvfb"};
  if (!name.empty()) {
    arguments.push_back(name);
  }
  // Writes its number to its standard output once it serves clients.
  for (const char* const argument :
       {"-displayfd", "1", "-screen", "0", "640x480x24", "-nolisten", "tcp", "-noreset"}) {
    arguments.emplace_back(argument);
  }
  _server.emplace(arguments);
  if (!_server->waitForOutput("\n")) {
    throw std::runtime_error("Xvfb does not start");
  }
  const std::string output = _server->output();
  _name = ":" + output.substr(0, output.find('\n'));
  setLayout("us");
}

void KeyboardDisplay::press(const std::string& keys) const { run({"xdotool", "key", keys}); }

void KeyboardDisplay::pressTimes(const std::string& keys, int count) const {
  std::vector<std::string> arguments = {"xdotool", "key", "--delay", "0"};
  arguments.insert(arguments.end(), static_cast<std::size_t>(count), keys);
  run(arguments);
}

void KeyboardDisplay::keyDown(const std::string& keys) const { run({"xdotool", "keydown", keys}); }

void KeyboardDisplay::keyUp(const std::string& keys) const { run({"xdotool", "keyup", keys}); }

void KeyboardDisplay::setLayout(const std::string& layout,
                                const std::vector<std::string>& more) const {
  std::vector<std::string> arguments = {"setxkbmap", "-layout", layout};
  arguments.insert(arguments.end(), more.begin(), more.end());
  run(arguments);
}

void KeyboardDisplay::run(const std::vector<std::string>& arguments) const {
  Process process = start(arguments);
  if (process.wait() != 0) {
    throw std::runtime_error(arguments.front() + " fails: " + process.errorOutput());
  }
}

Process KeyboardDisplay::start(const std::vector<std::string>& arguments) const {
  return Process(arguments, {{"DISPLAY", _name}});
}

void KeyboardDisplay::stop() {
  _server->sendSignal(SIGKILL);
  _server->wait();
}

}  // namespace quennel::test
