#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "platform/linux/watch/FileState.h"
#include "platform/linux/watch/Vnode.h"
#include "platform/linux/watch/Watches.h"

namespace quennel {

/// Where the watched objects are, as far as that can be known.
///
/// No descriptor may be held on an object, or its volume could not be unmounted. So an object is
/// looked at through its path, and counts as seen when that still leads to it. One that was renamed
/// is searched for in its folder, when it is next looked at; one that has left the folder is out of
/// sight, unless it comes back.
class Whereabouts {
 public:
  /// Both outlive this object.
  Whereabouts(std::deque<Vnode>& vnodes, Watches& watches) : _vnodes(vnodes), _watches(watches) {}

  /// The object is not at the path it was opened by, but here.
  void setLocation(int descriptor, const std::string& location);
  std::string location(int descriptor) const;

  /// What the object looks like now; nothing when it is out of sight.
  std::optional<FileState> look(int descriptor);

  /// The object has another name now.
  void noteRename(int descriptor) { _renamed.insert(descriptor); }

  void forget(int descriptor);

 private:
  Vnode& vnode(int descriptor) { return _vnodes[static_cast<std::size_t>(descriptor)]; }
  const char* pointerToLocation(int descriptor) const;
  std::optional<FileState> lookAt(int descriptor, const char* path);
  void search(const std::string& folder);
  std::unordered_multimap<std::uint64_t, int> takeRenamedIn(const std::string& folder);

  std::deque<Vnode>& _vnodes;
  Watches& _watches;
  /// Of those objects that are not at the path they were opened by.
  std::unordered_map<int, std::string> _locations;
  /// Descriptors of renamed objects that were not yet searched for.
  std::unordered_set<int> _renamed;
};

}  // namespace quennel
