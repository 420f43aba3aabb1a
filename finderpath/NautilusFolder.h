#pragma once

#include <optional>
#include <string>

namespace quennel {

class FileManagerBus;
class XDisplay;
struct FileManagerWindow;

/// The folder that a window of Nautilus shows; nothing when it cannot be known.
std::optional<std::string> folderOfNautilusWindow(XDisplay& display, const FileManagerBus& bus,
                                                  const FileManagerWindow& window);

/// The folder that the only window of Nautilus shows; nothing with several windows, or several
/// tabs that show different folders.
std::optional<std::string> folderOfOnlyNautilusWindow(const FileManagerBus& bus);

}  // namespace quennel
