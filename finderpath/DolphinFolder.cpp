#include "finderpath/DolphinFolder.h"

#include "finderpath/FileManagerBus.h"
#include "finderpath/WindowTitle.h"
#include "platform/values/URL.h"

namespace quennel {
namespace {

constexpr auto windowInterface = "org.kde.dolphin.MainWindow";

/// Dolphin answers whether it shows a folder, but not which one it shows.
std::optional<std::string> folderOfWindow(const FileManagerBus& bus, const std::string& name,
                                          const std::string& path) {
  const auto title = bus.textProperty(name, path, "org.qtproject.Qt.QWidget", "windowTitle");
  const auto folder = title ? folderInTitle(*title) : std::nullopt;
  const bool isShown =
      folder && bus.asks(name, path, windowInterface, "isUrlOpen", fileURL(*folder));
  return isShown ? folder : std::nullopt;
}

}  // namespace

std::optional<std::string> folderOfActiveDolphin(const FileManagerBus& bus,
                                                 const std::vector<std::string>& names) {
  for (const std::string& name : names) {
    if (!isDolphin(name)) {
      continue;
    }
    for (const std::string& window : bus.children(name, "/dolphin")) {
      const std::string path = "/dolphin/" + window;
      if (bus.asks(name, path, windowInterface, "isActiveWindow")) {
        return folderOfWindow(bus, name, path);
      }
    }
  }
  return std::nullopt;
}

bool isDolphin(const std::string& name) { return name.starts_with("org.kde.dolphin"); }

}  // namespace quennel
