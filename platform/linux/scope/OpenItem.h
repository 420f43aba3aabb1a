#pragma once

#include <optional>
#include <string>

#include "platform/linux/base/FileDescriptor.h"

namespace quennel {

// Descriptors that stand for places, whatever happens to their names. They are opened with O_PATH:
// that needs no permission on the item itself and has no effect on it.

/// A name in an open folder. The item itself need not exist.
struct ItemLocation {
  FileDescriptor folder;
  std::string name;
};

/// The folder at `path`, links followed; none, with errno, when it cannot be opened.
FileDescriptor openDirectory(const std::string& path);

/// Where an item at `path` is made or removed: a link in the last place stands for itself. Without
/// a folder, with errno, when it cannot be opened or the path has no name at its end.
ItemLocation locationOfPath(const std::string& path);

/// The same as text: the folder's part, without a slash at its end, and the name, which is empty
/// where the path does not end with one.
struct PathParts {
  std::string_view folder;
  std::string_view name;
};
PathParts partsOfPath(std::string_view path);

std::string_view withoutTrailingSlashes(std::string_view path);

/// The item of that name in the folder; none, too, when it is a link.
FileDescriptor openUnlessLink(const FileDescriptor& folder, const std::string& name);

/// Another descriptor of the same place.
FileDescriptor duplicate(const FileDescriptor& place);

/// An item that exists, and where it stands. A folder is known as itself: no name.
struct OpenItem {
  FileDescriptor item;
  ItemLocation location;
};

/// The item at `path`, links followed; nothing, with errno, when there is none.
std::optional<OpenItem> openItem(const std::string& path);

/// A path that leads to the open item, in this process, as long as the descriptor is open.
std::string pathThroughDescriptor(int descriptor);

/// The path by which the open item was last known; nothing when it cannot be told.
std::optional<std::string> pathOfDescriptor(int descriptor);

}  // namespace quennel
