#include "tests/e2e/folders/FileManagerSession.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <stdexcept>
#include <utility>

namespace quennel::test {
namespace {

std::string outputOf(const std::vector<std::string>& arguments) {
  Process process(arguments);
  process.wait();
  return process.output();
}

}  // namespace

std::optional<std::string> FileManagerSession::missingProgram(const FileManager& fileManager) {
  if (auto missing = XServer::missingProgram()) {
    return missing;
  }
  for (const std::string& program : {fileManager, std::string("dbus-daemon"), std::string("xev")}) {
    if (!isInstalled(program)) {
      return program;
    }
  }
  return std::nullopt;
}

FileManagerSession::FileManagerSession(FileManager fileManager, Deadline::Clock::duration patience)
    : _fileManager(std::move(fileManager)), _patience(patience) {}

std::string FileManagerSession::makeFolder(const std::string& name) const {
  std::string path = _home / name;
  std::filesystem::create_directories(path);
  return path;
}

std::string FileManagerSession::openNewFolder(const std::string& name) {
  return openFolder(makeFolder(name));
}

std::string FileManagerSession::openFolder(const std::string& path) {
  std::string written;
  for (const char* const attempt : {"at first", "at the second attempt"}) {
    const std::string before = _server.activeWindow();
    _processes.emplace_back(std::vector<std::string>{_fileManager, path});
    if (const auto window = waitForNewWindow(before)) {
      return *window;
    }
    const Process& silent = _processes.back();
    written.append(", ").append(attempt).append(silent.isRunning() ? " (it runs)" : " (it ended)");
    written.append(" it wrote: ").append(silent.output()).append(silent.errorOutput());
    _processes.pop_back();
  }
  throw std::runtime_error(_fileManager + " opens no window" + written);
}

std::optional<std::string> FileManagerSession::waitForNewWindow(const std::string& before) const {
  std::string window;
  const auto appears = [&] {
    window = _server.activeWindow();
    return window != before && isOfFileManager(window);
  };
  return eventually(appears, Deadline(_patience)) ? std::optional(window) : std::nullopt;
}

void FileManagerSession::activate(const std::string& window) const {
  outputOf({"xdotool", "windowactivate", "--sync", window});
}

void FileManagerSession::minimize(const std::string& window) const {
  outputOf({"xdotool", "windowminimize", "--sync", window});
}

pid_t FileManagerSession::processOf(const std::string& window) const {
  return std::stoi(outputOf({"xdotool", "getwindowpid", window}));
}

Process FileManagerSession::openOtherProgram() const {
  Process program({"xev"});
  if (_server.waitForActiveWindow("Event Tester").empty()) {
    throw std::runtime_error("xev opens no window");
  }
  return program;
}

std::size_t FileManagerSession::countWindows() const {
  // "_NET_CLIENT_LIST(WINDOW): window id # 0x400007, 0x800006"
  const std::string list = outputOf({"xprop", "-root", "_NET_CLIENT_LIST"});
  std::size_t count = 0;
  for (auto at = list.find("0x"); at != std::string::npos; at = list.find("0x", at + 1)) {
    ++count;
  }
  return count;
}

bool FileManagerSession::isOfFileManager(const std::string& window) const {
  std::string names = _server.windowProperty(window, "WM_CLASS");
  std::transform(names.begin(), names.end(), names.begin(),
                 [](unsigned char letter) { return std::tolower(letter); });
  return names.find(std::filesystem::path(_fileManager).filename()) != std::string::npos;
}

}  // namespace quennel::test
