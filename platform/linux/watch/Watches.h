#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/linux/watch/Inotify.h"
#include "platform/linux/watch/ParentWatches.h"
#include "platform/linux/watch/WatchTable.h"

namespace quennel {

/// The kernel's watches and who needs them: descriptors that are open on their objects, and
/// directories whose parents they are on.
class Watches {
 public:
  /// What is asked of every watch at first. For a directory it is replaced by what its
  /// registrations need.
  static constexpr std::uint32_t fileEvents =
      IN_MODIFY | IN_ATTRIB | IN_MOVE_SELF | IN_DELETE_SELF | IN_DONT_FOLLOW;

  Inotify& inotify() { return _inotify; }
  const Inotify& inotify() const { return _inotify; }

  /// The watch of the object at `path`; -1, and errno set, when there is none. It is to be entered
  /// in the table or released. When the user's limit is reached, watches that are only on parents
  /// make room.
  int add(const char* path, std::uint32_t events);

  /// Ends the watch unless something needs it.
  void release(int watch);

  /// Whether `path` leads to the object of that watch, by the kernel's own word.
  bool isOnObjectAt(int watch, const char* path);

  Watch* find(int watch) { return _table.find(watch); }
  void insert(int watch, int descriptor) { _table.insert(watch, descriptor); }
  void remove(int watch) { _table.remove(watch); }

  /// Has the parent of the directory at `location` tell when the directory is removed.
  void addParent(int descriptor, const std::string& location);
  void removeParent(int descriptor);
  bool hasParent(int descriptor) const { return _parents.containsChild(descriptor); }
  bool isOnParent(int watch) const { return _parents.contains(watch); }
  std::vector<int> children(int parentWatch, const char* name) const {
    return _parents.children(parentWatch, name);
  }

 private:
  bool releaseParents();

  Inotify _inotify;
  WatchTable _table;
  ParentWatches _parents;
};

}  // namespace quennel
