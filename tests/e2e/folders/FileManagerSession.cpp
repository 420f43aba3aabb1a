#include "tests/e2e/folders/FileManagerSession.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <stdexcept>
#include <utility>

#include "tests/support/Deadline.h"

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

FileManagerSession::FileManagerSession(FileManager fileManager)
    : _fileManager(std::move(fileManager)) {}

std::string FileManagerSession::makeFolder(const std::string& name) const {
  std::string path = _home / name;
  std::filesystem::create_directories(path);
  return path;
}

std::string FileManagerSession::openNewFolder(const std::string& name) {
  return openFolder(makeFolder(name));
}

std::string FileManagerSession::openFolder(const std::string& path) {
  const std::string before = _server.activeWindow();
  _processes.emplace_back(std::vector<std::string>{_fileManager, path});
  std::string window;
  const auto appears = [&] {
    window = _server.activeWindow();
    return window != before && isOfFileManager(window);
  };
  if (!eventually(appears)) {
    throw std::runtime_error(_fileManager + " opens no window");
  }
  return window;
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
  return names.find(_fileManager) != std::string::npos;
}

}  // namespace quennel::test
