#include "finderpath/NautilusFolder.h"

#include <libintl.h>

#include <chrono>
#include <cstdlib>
#include <thread>

#include "finderpath/FileManagerBus.h"
#include "finderpath/FileManagerWindow.h"
#include "finderpath/TabInUse.h"
#include "finderpath/WindowTitle.h"
#include "finderpath/XDisplay.h"

namespace quennel {
namespace {

/// In a title the user's home folder is called by Nautilus's own word for it.
bool isTitleInNautilus(const std::string& title, const std::string& folder) {
  const char* home = std::getenv("HOME");
  return home != nullptr && folder == home ? title == dgettext("nautilus", "Home")
                                           : isTitleOfFolder(title, folder);
}

/// While a tab loads, the list of locations does not have it yet.
bool isLoading(const std::string& title) { return title == dgettext("nautilus", "Loading…"); }

std::optional<std::string> readFolder(XDisplay& display, const FileManagerBus& bus,
                                      xcb_window_t window, const std::string& title) {
  const auto locations =
      bus.openWindowsWithLocations(display.property(window, "_GTK_UNIQUE_BUS_NAME"));
  if (!locations || isLoading(title)) {
    return std::nullopt;
  }
  const auto tabs = locations->find(display.property(window, "_GTK_WINDOW_OBJECT_PATH"));
  if (tabs == locations->end()) {
    return std::nullopt;
  }
  return folderOfTabInUse(tabs->second, [&title](const std::string& folder) {
    return isTitleInNautilus(title, folder);
  });
}

}  // namespace

std::optional<std::string> folderOfNautilusWindow(XDisplay& display, const FileManagerBus& bus,
                                                  const FileManagerWindow& window) {
  // The list of locations follows a window after 100 ms at most, its title does at once.
  constexpr int attempts = 3;
  std::optional<std::string> folder;
  for (int attempt = 0; attempt < attempts; ++attempt) {
    if (attempt > 0) {
      std::this_thread::sleep_for(std::chrono::milliseconds(70));
    }
    const std::string title = display.property(window.window, "_NET_WM_NAME");
    folder = readFolder(display, bus, window.window, title);
    if (folder && isTitleInNautilus(title, *folder)) {
      return folder;
    }
  }
  return folder;
}

std::optional<std::string> folderOfOnlyNautilusWindow(const FileManagerBus& bus) {
  const auto locations = bus.openWindowsWithLocations("org.gnome.Nautilus");
  if (!locations || locations->size() != 1) {
    return std::nullopt;
  }
  return folderOfTabInUse(locations->begin()->second, [](const std::string&) { return false; });
}

}  // namespace quennel
