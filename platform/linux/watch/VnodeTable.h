#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "platform/KernelQueue.h"
#include "platform/linux/base/FileDescriptor.h"
#include "platform/linux/watch/Vnode.h"
#include "platform/linux/watch/Watches.h"
#include "platform/linux/watch/Whereabouts.h"

namespace quennel {

/// The descriptors of a kernel queue and their events. Inotify says that something happened to an
/// object, and hardly what; comparing looks at the object from before and after tells the rest. No
/// operation waits. Not for several threads at once: the queue locks.
class VnodeTable {
 public:
  VnodeTable() = default;
  VnodeTable(const VnodeTable&) = delete;
  VnodeTable& operator=(const VnodeTable&) = delete;

  /// False when the system has no inotify instance left for this user.
  bool isValid() const { return static_cast<bool>(_watches.inotify()); }

  /// As `KernelQueue` describes them; `submit` answers false for a bad record.
  int open(const SharedText& path, Error* error);
  void close(int descriptor);
  bool submit(const KernelEvent& change);

  /// Takes in what the kernel has to tell: for when `eventDescriptor` is readable.
  void update();
  int eventDescriptor() const { return _watches.inotify().descriptor(); }

  /// Looks which volumes are gone: for when `mountDescriptor` has priority data. There is none, -1,
  /// until a registration asks for `NOTE_REVOKE`.
  void updateMounts();
  int mountDescriptor() const { return _mounts.get(); }

  bool hasEvent() const { return !_ready.empty(); }
  /// Takes out the next event; false when there is none.
  bool takeEvent(KernelEvent& event);

 private:
  /// What opening a path found.
  struct Sighting {
    int watch;
    FileState state;
    /// Where the object is, if the path leads there through a symbolic link or in a roundabout way.
    std::optional<std::string> location;
  };

  // VnodeTable.cpp: descriptors and registrations
  Vnode& vnode(int descriptor) { return _vnodes[static_cast<std::size_t>(descriptor)]; }
  int count() const { return static_cast<int>(_vnodes.size()); }
  bool isOpen(int descriptor) const;
  std::optional<Sighting> watchPath(const SharedText& path);
  std::optional<Sighting> watchObjectAt(const char* path);
  int insert(const SharedText& path, const Sighting& sighting);
  void leaveWatch(int descriptor);
  void watchDirectory(int descriptor);
  void post(int descriptor, std::uint32_t notes);

  // VnodeTable+Events.cpp: what the kernel tells
  void readEvents();
  void noteEvent(const inotify_event& event, const char* name);
  void noteEvents(int watch, std::uint32_t events);
  void handleEventsOfWatch(int watch);
  void handleRemovedChildren();
  void endWatch(int watch);
  void handleEvents(int descriptor, std::uint32_t events);
  std::uint32_t changes(int descriptor, std::uint32_t events);
  bool hasFreshRename(int watch);
  void handleRename(int descriptor);
  std::uint32_t nameRemoved(int descriptor);
  std::uint32_t objectRemoved(int descriptor);
  std::uint32_t volumeRemoved(int descriptor);

  // VnodeTable+Losses.cpp: what it does not tell
  void lookAtEverything();
  void explainDisappearance(const std::vector<int>& descriptors);
  void handleMissedRename(int descriptor);

  Watches _watches;
  FileDescriptor _mounts;
  std::deque<Vnode> _vnodes;  // by descriptor
  std::vector<int> _closedDescriptors;
  Whereabouts _whereabouts{_vnodes, _watches};

  std::deque<int> _ready;
  std::vector<int> _touchedWatches;
  std::vector<int> _removedChildren;
  bool _eventsWereLost = false;
};

}  // namespace quennel
