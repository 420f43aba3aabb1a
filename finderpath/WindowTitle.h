#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quennel {

/// Whether `title` is one that a file manager gives to a window that shows `folder`: the folder's
/// name or its whole path, alone or with " - " or " — " and the program's name behind it.
bool isTitleOfFolder(std::string_view title, std::string_view folder);

/// The existing folder whose whole path `title` shows; nothing when it shows none, or may mean
/// several.
std::optional<std::string> folderInTitle(std::string_view title);

}  // namespace quennel
