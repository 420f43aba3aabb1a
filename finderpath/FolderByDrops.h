#pragma once

#include <optional>
#include <string>

namespace quennel {

class FileManagerBus;
class XDisplay;
struct FileManagerWindow;

/// The folder that a window shows, asked by drops all over it; nothing when it cannot be known.
/// `bus` may be null.
std::optional<std::string> folderByDrops(XDisplay& display, const FileManagerBus* bus,
                                         const FileManagerWindow& window);

}  // namespace quennel
