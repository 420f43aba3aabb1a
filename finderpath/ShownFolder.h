#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace quennel {

/// Where files go that are dropped at two places of a window, one far above the other: folders,
/// absolute and without slashes at the end; nothing for a place that takes no file.
using ColumnOfDrops = std::array<std::optional<std::string>, 2>;

/// The folder that a window shows, from two columns of drops, one in each half of the window.
///
/// A file dropped beside the items goes into the folder shown, one dropped on an item into that
/// item. With two panes the columns belong to different folders, and the title tells which pane is
/// in use. Nothing when all this leaves a doubt.
std::optional<std::string> folderShown(const std::array<ColumnOfDrops, 2>& columns,
                                       std::string_view title);

}  // namespace quennel
