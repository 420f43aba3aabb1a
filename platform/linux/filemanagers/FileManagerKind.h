#pragma once

#include <optional>
#include <string_view>

namespace quennel {

/// The file managers that are known, by what they do with a drag of a file that is yet to be made.
enum class FileManagerKind {
  /// Thunar, PCManFM, Nemo, Caja: tell a drag where to save.
  SavesDrops,
  /// PCManFM-Qt: tells it only when the pointer is over the place of the drop.
  SavesDropsUnderPointer,
  /// Dolphin: tells another program where to extract to.
  ExtractsDrops,
  /// Nautilus: tells a drag nothing, but on the bus the folders of all windows.
  ListsLocations,
};

/// The file manager that is called exactly so in the second text of a window's property WM_CLASS,
/// by which its windows are told from those of its helpers. Capitals make no difference.
std::optional<FileManagerKind> fileManagerOfClass(std::string_view name);

/// The file manager whose name is anywhere in a window's property WM_CLASS: a drop is also meant
/// for a desktop of its, such as "nemo-desktop". Capitals make no difference.
std::optional<FileManagerKind> fileManagerNamedIn(std::string_view windowClass);

}  // namespace quennel
