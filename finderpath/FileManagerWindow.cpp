#include "finderpath/FileManagerWindow.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "finderpath/XDisplay.h"

namespace quennel {
namespace {

std::optional<FileManagerKind> kindOf(XDisplay& display, xcb_window_t window) {
  // Two texts, each with a NUL behind it.
  const std::string texts = display.property(window, "WM_CLASS");
  const std::size_t firstEnd = texts.find('\0');
  if (firstEnd == std::string::npos) {
    return std::nullopt;
  }
  const std::string second = texts.substr(firstEnd + 1);
  return fileManagerOfClass(second.substr(0, second.find('\0')));
}

bool holds(const std::vector<std::uint32_t>& numbers, std::uint32_t number) {
  return std::find(numbers.begin(), numbers.end(), number) != numbers.end();
}

bool isBrowsingWindow(XDisplay& display, xcb_window_t window) {
  return holds(display.numbers(window, "_NET_WM_WINDOW_TYPE"),
               display.atom("_NET_WM_WINDOW_TYPE_NORMAL")) &&
         display.numbers(window, "WM_TRANSIENT_FOR").empty();
}

bool isOnCurrentDesktop(XDisplay& display, xcb_window_t window) {
  constexpr std::uint32_t everyDesktop = 0xFFFFFFFF;
  const auto own = display.numbers(window, "_NET_WM_DESKTOP");
  const auto current = display.numbers(display.root(), "_NET_CURRENT_DESKTOP");
  return own.empty() || current.empty() || own.front() == everyDesktop ||
         own.front() == current.front();
}

bool canBeSeen(XDisplay& display, xcb_window_t window) {
  return !holds(display.numbers(window, "_NET_WM_STATE"), display.atom("_NET_WM_STATE_HIDDEN")) &&
         isOnCurrentDesktop(display, window);
}

std::optional<FileManagerWindow> asFileManagerWindow(XDisplay& display, xcb_window_t window) {
  const auto kind = kindOf(display, window);
  if (!kind || !isBrowsingWindow(display, window) || !canBeSeen(display, window)) {
    return std::nullopt;
  }
  return FileManagerWindow{window, *kind, display.property(window, "_NET_WM_NAME")};
}

}  // namespace

std::optional<FileManagerWindow> frontFileManagerWindow(
    XDisplay& display, InFront inFront, const std::vector<xcb_window_t>& passedOver) {
  std::vector<std::uint32_t> windows =
      inFront == InFront::Topmost ? display.numbers(display.root(), "_NET_CLIENT_LIST_STACKING")
                                  : std::vector<std::uint32_t>();
  const auto active = display.numbers(display.root(), "_NET_ACTIVE_WINDOW");
  windows.insert(windows.end(), active.begin(), active.end());
  std::reverse(windows.begin(), windows.end());
  std::erase_if(windows, [&](xcb_window_t window) { return holds(passedOver, window); });
  for (const xcb_window_t window : windows) {
    if (auto found = asFileManagerWindow(display, window)) {
      return found;
    }
  }
  return std::nullopt;
}

}  // namespace quennel
