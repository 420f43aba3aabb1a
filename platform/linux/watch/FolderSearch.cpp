#include "platform/linux/watch/FolderSearch.h"

#include <dirent.h>

#include <memory>

#include "platform/values/Path.h"

namespace quennel {

namespace {

struct CloseFolder {
  void operator()(DIR* folder) const { closedir(folder); }
};

}  // namespace

std::vector<std::pair<std::uint64_t, std::string>> itemsWithInode(
    const std::string& folder, const std::function<bool(std::uint64_t)>& isWanted) {
  std::vector<std::pair<std::uint64_t, std::string>> items;
  const std::unique_ptr<DIR, CloseFolder> entries(opendir(folder.c_str()));
  if (!entries) {
    return items;
  }
  while (const dirent* entry = readdir(entries.get())) {
    if (isWanted(entry->d_ino)) {
      items.emplace_back(entry->d_ino, appendingPathComponent(folder, entry->d_name));
    }
  }
  return items;
}

}  // namespace quennel
