#pragma once

#include <string>

namespace quennel {

/// What to do with a folder whose permissions keep its owner from removing what it holds.
enum class LockedFolders { Fail, Unlock };

/// Removes the item `name` of the open folder `parent`: a file, a link, or a folder with all it
/// holds, however deep. Links are not followed. Answers 0, or the errno value of the first failure;
/// what could be removed before it is gone.
int removeTree(int parent, const std::string& name, LockedFolders locked);

}  // namespace quennel
