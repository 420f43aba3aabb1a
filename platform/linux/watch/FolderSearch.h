#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace quennel {

/// The items of `folder` with a wanted inode number, as pairs of that and the path. Nothing when
/// the folder cannot be read.
std::vector<std::pair<std::uint64_t, std::string>> itemsWithInode(
    const std::string& folder, const std::function<bool(std::uint64_t)>& isWanted);

}  // namespace quennel
