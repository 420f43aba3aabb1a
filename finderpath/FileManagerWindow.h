#pragma once

#include <xcb/xcb.h>

#include <optional>
#include <string>
#include <vector>

#include "platform/linux/filemanagers/FileManagerKind.h"

namespace quennel {

class XDisplay;

/// A file manager's window on the X display.
struct FileManagerWindow {
  xcb_window_t window;
  FileManagerKind kind;
  /// In UTF-8, as it stands on the window.
  std::string title;
};

/// Which windows count as being in front.
enum class InFront {
  /// The topmost of the file managers' windows that can be seen, even behind other programs'.
  Topmost,
  /// Only the window that has the focus.
  Focused,
};

/// The file manager's window in front, of those that are not among `passedOver`; nothing when there
/// is none. Dialogs and desktops are none.
std::optional<FileManagerWindow> frontFileManagerWindow(
    XDisplay& display, InFront inFront, const std::vector<xcb_window_t>& passedOver = {});

}  // namespace quennel
