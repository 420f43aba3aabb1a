#pragma once

#include <optional>
#include <string>
#include <vector>

namespace quennel {

class FileManagerBus;

/// The folder that the window of Dolphin in use shows, as far as Dolphin tells it on the bus, which
/// has these `names`: only when the window's title is set to show the whole path.
std::optional<std::string> folderOfActiveDolphin(const FileManagerBus& bus,
                                                 const std::vector<std::string>& names);

/// Whether a program of this name on the bus is Dolphin.
bool isDolphin(const std::string& name);

}  // namespace quennel
