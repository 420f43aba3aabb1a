#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace quennel {

/// The folder of the tab in use, of a window that tells the URIs of all its tabs but not which one
/// is in use: the only one, or the only one that `isNamed` in the window's title. Nothing when
/// there is a doubt, and when the tab shows something that is not a folder of the file system.
std::optional<std::string> folderOfTabInUse(const std::vector<std::string>& uris,
                                            const std::function<bool(const std::string&)>& isNamed);

}  // namespace quennel
