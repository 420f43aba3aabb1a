#include "finderpath/FrontFolder.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
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

}  // namespace

std::optional<std::string> frontFolder() {
  const auto bus = FileManagerBus::open();
  // Beside Wayland the X display knows the order of its own windows only.
  const InFront inFront = isWayland() ? InFront::Focused : InFront::Topmost;
  if (const auto display = XDisplay::open()) {
    if (const auto window = frontFileManagerWindow(*display, inFront)) {
      return folderOfWindow(*display, bus.get(), *window);
    }
  }
  return isWayland() && bus ? folderToldOnBus(*bus) : std::nullopt;
}

bool canBePrinted(const std::string& path) {
  return isValidUTF8(path) && trimmingNewlines(path) == path;
}

}  // namespace quennel
