#include "finderpath/FrontFolder.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <system_error>
#include <vector>

#include "finderpath/DolphinFolder.h"
#include "finderpath/FileManagerBus.h"
#include "finderpath/FileManagerWindow.h"
#include "finderpath/FolderByDrops.h"
#include "finderpath/NautilusFolder.h"
#include "finderpath/XDisplay.h"
#include "platform/values/Text.h"

namespace quennel {
namespace {

constexpr auto noWindow = "No window of a file manager that can be asked shows a folder.";
constexpr auto notTold = "The file manager in front does not tell for certain what it shows.";
constexpr auto noFolder = "What the file manager in front shows is not a folder of this computer.";
constexpr auto notPrintable = "The name of the folder in front cannot be passed on.";

std::optional<std::string> folderOfWindow(XDisplay& display, const FileManagerBus* bus,
                                          const FileManagerWindow& window) {
  if (window.kind != FileManagerKind::ListsLocations) {
    return folderByDrops(display, bus, window);
  }
  return bus != nullptr ? folderOfNautilusWindow(display, *bus, window) : std::nullopt;
}

bool isOtherFileManager(const std::string& name) { return isDolphin(name) || name == "org.Nemo"; }

/// Where programs cannot see each other's windows, only what file managers tell is known.
std::optional<std::string> folderToldOnBus(const FileManagerBus& bus) {
  const std::vector<std::string> names = bus.names();
  if (auto folder = folderOfActiveDolphin(bus, names)) {
    return folder;
  }
  // A window that is the only one is the one in front.
  return std::none_of(names.begin(), names.end(), isOtherFileManager)
             ? folderOfOnlyNautilusWindow(bus)
             : std::nullopt;
}

bool isWayland() {
  const char* display = std::getenv("WAYLAND_DISPLAY");
  return display != nullptr && *display != '\0';
}

/// The same folder by whatever path.
bool isSameFolder(const std::string& path, const std::string& other) {
  std::error_code failure;
  return std::filesystem::equivalent(path, other, failure);
}

/// What came of looking at the windows of an X display.
struct Search {
  bool hasFoundWindow = false;
  std::optional<std::string> folder;
};

Search searchWindows(XDisplay& display, const FileManagerBus* bus, InFront inFront,
                     const std::string& scriptsFolder) {
  std::vector<xcb_window_t> passedOver;
  while (const auto window = frontFileManagerWindow(display, inFront, passedOver)) {
    auto folder = folderOfWindow(display, bus, *window);
    if (!folder || !isSameFolder(*folder, scriptsFolder)) {
      return {true, std::move(folder)};
    }
    passedOver.push_back(window->window);
  }
  return {};
}

Search searchSession(const std::string& scriptsFolder) {
  const auto bus = FileManagerBus::open();
  // Beside Wayland the X display knows the order of its own windows only.
  const InFront inFront = isWayland() ? InFront::Focused : InFront::Topmost;
  Search search;
  if (const auto display = XDisplay::open()) {
    search = searchWindows(*display, bus.get(), inFront, scriptsFolder);
  }
  if (!search.hasFoundWindow && isWayland() && bus) {
    search.folder = folderToldOnBus(*bus);
    search.hasFoundWindow = search.folder && !isSameFolder(*search.folder, scriptsFolder);
  }
  return search;
}

}  // namespace

FrontFolder frontFolder(const std::string& scriptsFolder) {
  const Search search = searchSession(scriptsFolder);
  if (!search.hasFoundWindow) {
    return {std::nullopt, noWindow};
  }
  if (!search.folder) {
    return {std::nullopt, notTold};
  }
  std::error_code ignored;
  if (!std::filesystem::is_directory(*search.folder, ignored)) {
    return {std::nullopt, noFolder};
  }
  if (!canBePrinted(*search.folder)) {
    return {std::nullopt, notPrintable};
  }
  return {search.folder, nullptr};
}

bool canBePrinted(const std::string& path) {
  return isValidUTF8(path) && trimmingNewlines(path) == path;
}

}  // namespace quennel
