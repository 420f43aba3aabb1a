#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <string>

#include "platform/linux/base/FileDescriptor.h"
#include "platform/linux/mounts/MountTable.h"
#include "platform/linux/scope/Bookmark.h"
#include "platform/linux/scope/HandleSearch.h"

namespace quennel {

/// Finds the folders of bookmarks, and makes bookmarks of folders.
class BookmarkResolver {
 public:
  /// What is to be known of the folder at `path`; nothing, with errno, when there is none.
  std::optional<Bookmark> bookmarkOfPath(const std::string& path) const;

  /// Where the folder is now. Only the very folder will do: the place where it was, the same place
  /// on its volume wherever that is mounted, and then wherever the filesystem finds it. A volume
  /// that is served by another machine or program and does not answer within a second counts as
  /// away, and is not asked again for a while.
  std::optional<std::string> pathOfBookmark(const Bookmark& bookmark);

 private:
  using Clock = std::chrono::steady_clock;

  std::optional<std::string> find(const Bookmark& bookmark);
  std::optional<std::string> findOnServedVolume(const Bookmark& bookmark);
  std::optional<std::string> pathAfterMove(const Bookmark& bookmark, const Mount& mount);

  HandleSearch _search;
  /// Volumes that did not answer, and when.
  std::map<std::string, Clock::time_point> _silentVolumes;
};

}  // namespace quennel
