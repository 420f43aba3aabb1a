#include "finderpath/ShownFolder.h"

#include <algorithm>
#include <iterator>
#include <set>

#include "finderpath/WindowTitle.h"
#include "platform/values/Path.h"

namespace quennel {
namespace {

using Folders = std::set<std::string>;

Folders folderAndParent(const std::string& folder) {
  return {folder, deletingLastPathComponent(folder)};
}

Folders both(const Folders& left, const Folders& right) {
  Folders result;
  std::set_intersection(left.begin(), left.end(), right.begin(), right.end(),
                        std::inserter(result, result.end()));
  return result;
}

/// The folders that a column may show.
Folders foldersOf(const ColumnOfDrops& column) {
  const auto& [upper, lower] = column;
  if (!upper && !lower) {
    return {};
  }
  if (!upper || !lower) {
    return folderAndParent(upper ? *upper : *lower);
  }
  // No item is so large that both places are on it.
  return *upper == *lower ? Folders{*upper}
                          : both(folderAndParent(*upper), folderAndParent(*lower));
}

Folders named(const Folders& folders, std::string_view title) {
  Folders result;
  std::copy_if(folders.begin(), folders.end(), std::inserter(result, result.end()),
               [&](const std::string& folder) { return isTitleOfFolder(title, folder); });
  return result;
}

}  // namespace

std::optional<std::string> folderShown(const std::array<ColumnOfDrops, 2>& columns,
                                       std::string_view title) {
  const Folders left = foldersOf(columns[0]);
  const Folders right = foldersOf(columns[1]);
  Folders possible = left;
  possible.insert(right.begin(), right.end());

  const Folders fitting = named(possible, title);
  if (fitting.size() == 1) {
    return *fitting.begin();
  }
  // Not every title is the folder's name ("Home"). Then every place has to tell the same; a pane
  // that takes no files must not leave the word to the other one.
  const bool isUnanimous = left == right && left.size() == 1;
  return fitting.empty() && isUnanimous ? std::optional(*left.begin()) : std::nullopt;
}

}  // namespace quennel
