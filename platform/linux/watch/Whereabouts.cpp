#include "platform/linux/watch/Whereabouts.h"

#include "platform/linux/watch/FolderSearch.h"
#include "platform/values/Path.h"

namespace quennel {

void Whereabouts::setLocation(int descriptor, const std::string& location) {
  _locations.insert_or_assign(descriptor, location);
}

std::string Whereabouts::location(int descriptor) const { return pointerToLocation(descriptor); }

const char* Whereabouts::pointerToLocation(int descriptor) const {
  if (!_locations.empty()) {
    if (const auto found = _locations.find(descriptor); found != _locations.end()) {
      return found->second.c_str();
    }
  }
  return _vnodes[static_cast<std::size_t>(descriptor)].path.c_str();
}

std::optional<FileState> Whereabouts::look(int descriptor) {
  auto state = lookAt(descriptor, pointerToLocation(descriptor));
  if (!state && _renamed.contains(descriptor)) {
    search(deletingLastPathComponent(location(descriptor)));
    state = lookAt(descriptor, pointerToLocation(descriptor));
  }
  vnode(descriptor).isInSight = state.has_value();
  return state;
}

std::optional<FileState> Whereabouts::lookAt(int descriptor, const char* path) {
  const Vnode& watched = vnode(descriptor);
  auto state = FileState::atPath(path);
  // An overlay gives an object other numbers once it has copied it up.
  if (state && !state->isSameObject(watched.state) &&
      (watched.watch < 0 || !_watches.isOnObjectAt(watched.watch, path))) {
    state.reset();
  }
  return state;
}

/// Searches the folder once for all that was renamed in it: where many files are, many may be
/// renamed at once.
void Whereabouts::search(const std::string& folder) {
  const auto renamed = takeRenamedIn(folder);
  const auto isWanted = [&](std::uint64_t inode) { return renamed.contains(inode); };
  for (const auto& [inode, path] : itemsWithInode(folder, isWanted)) {
    const auto [first, last] = renamed.equal_range(inode);
    for (auto entry = first; entry != last; ++entry) {
      if (lookAt(entry->second, path.c_str())) {
        setLocation(entry->second, path);
      }
    }
  }
}

std::unordered_multimap<std::uint64_t, int> Whereabouts::takeRenamedIn(const std::string& folder) {
  std::unordered_multimap<std::uint64_t, int> taken;
  std::erase_if(_renamed, [&](int descriptor) {
    const bool isInFolder = deletingLastPathComponent(location(descriptor)) == folder;
    if (isInFolder) {
      taken.emplace(vnode(descriptor).state.inode, descriptor);
    }
    return isInFolder;
  });
  return taken;
}

void Whereabouts::forget(int descriptor) {
  _locations.erase(descriptor);
  _renamed.erase(descriptor);
}

}  // namespace quennel
