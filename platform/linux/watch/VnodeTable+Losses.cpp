#include <algorithm>
#include <utility>

#include "platform/linux/mounts/MountTable.h"
#include "platform/linux/watch/VnodeTable.h"

namespace quennel {

namespace {

bool isMounted(const FileState& state, const MountTable& mounts) {
  // The table has no line for the root of a process in a changed root that is no mount itself; then
  // it says nothing about the mounts it does not list.
  const bool isWhole = std::any_of(mounts.mounts().begin(), mounts.mounts().end(),
                                   [](const Mount& mount) { return mount.point == "/"; });
  return state.mount == 0 || !isWhole || mounts.mountWithId(state.mount);
}

/// What lies between the last look at the object and this one. `wasInSight` is false when it was
/// renamed since, which dates its attributes anew.
std::uint32_t missedChanges(Vnode& watched, const FileState& state, bool wasInSight) {
  FileState before = std::exchange(watched.state, state);
  if (!wasInSight) {
    before.attributeChange = state.attributeChange;
  }
  return notesBetween(before, state);
}

}  // namespace

void VnodeTable::updateMounts() {
  const auto mounts = MountTable::current();
  for (int descriptor = 0; descriptor < count(); ++descriptor) {
    if (vnode(descriptor).wanted & NOTE_REVOKE && !isMounted(vnode(descriptor).state, mounts)) {
      post(descriptor, volumeRemoved(descriptor));
    }
  }
}

/// The kernel had no room for its events. What happened shows in the objects themselves.
void VnodeTable::lookAtEverything() {
  std::vector<int> vanished;
  for (int descriptor = 0; descriptor < count(); ++descriptor) {
    if (!isOpen(descriptor)) {
      continue;
    }
    Vnode& watched = vnode(descriptor);
    const bool wasInSight = watched.isInSight;
    if (const auto state = _whereabouts.look(descriptor)) {
      post(descriptor, missedChanges(watched, *state, wasInSight));
    } else if (wasInSight) {
      vanished.push_back(descriptor);
    }
  }
  if (!vanished.empty()) {
    explainDisappearance(vanished);
  }
}

/// The kernel has ended the watches of objects that are no more; all others have other names now.
void VnodeTable::explainDisappearance(const std::vector<int>& descriptors) {
  const auto mounts = MountTable::current();
  const auto live = _watches.inotify().liveWatches();
  std::vector<int> moved;
  for (const int descriptor : descriptors) {
    if (!live || live->contains(vnode(descriptor).watch)) {
      handleRename(descriptor);
      moved.push_back(descriptor);
    } else {
      post(descriptor, isMounted(vnode(descriptor).state, mounts) ? objectRemoved(descriptor)
                                                                  : volumeRemoved(descriptor));
    }
  }
  for (const int descriptor : moved) {
    handleMissedRename(descriptor);
  }
}

void VnodeTable::handleMissedRename(int descriptor) {
  if (const auto state = _whereabouts.look(descriptor)) {
    post(descriptor, NOTE_RENAME | missedChanges(vnode(descriptor), *state, false));
  } else {
    // Moved elsewhere, or unlinked while another program or another name keeps it alive: nothing
    // shows which.
    post(descriptor, NOTE_RENAME | NOTE_DELETE | NOTE_LINK);
  }
}

}  // namespace quennel
