#include <unistd.h>

#include <utility>

#include "platform/linux/watch/VnodeTable.h"
#include "platform/values/Path.h"

namespace quennel {

namespace {

constexpr std::uint32_t changeEvents =
    IN_MODIFY | IN_ATTRIB | IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO;

/// What an event about an entry of a watched directory says of the directory itself.
std::uint32_t eventsOfDirectory(std::uint32_t mask) {
  const std::uint32_t events = mask & (IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO);
  const bool isSubdirectory = mask & IN_ISDIR && mask & (IN_CREATE | IN_DELETE);
  return events | (isSubdirectory ? IN_ISDIR : 0);
}

bool isFolderThere(const std::string& location) {
  return access(deletingLastPathComponent(location).c_str(), F_OK) == 0;
}

}  // namespace

void VnodeTable::update() {
  readEvents();
  // A look at an object may read further events, and touch further watches.
  std::size_t next = 0;
  while (next < _touchedWatches.size()) {
    handleEventsOfWatch(_touchedWatches[next++]);
  }
  _touchedWatches.clear();
  handleRemovedChildren();
  if (std::exchange(_eventsWereLost, false)) {
    lookAtEverything();
  }
}

void VnodeTable::readEvents() {
  _watches.inotify().read(
      [this](const inotify_event& event, const char* name) { noteEvent(event, name); });
}

void VnodeTable::noteEvent(const inotify_event& event, const char* name) {
  if (event.mask & IN_Q_OVERFLOW) {
    _eventsWereLost = true;
  } else if (*name == '\0') {
    noteEvents(event.wd, event.mask & ~std::uint32_t{IN_ISDIR});
  } else {
    noteEvents(event.wd, eventsOfDirectory(event.mask));
    if (event.mask & IN_DELETE && event.mask & IN_ISDIR) {
      const auto removed = _watches.children(event.wd, name);
      _removedChildren.insert(_removedChildren.end(), removed.begin(), removed.end());
    }
  }
}

void VnodeTable::noteEvents(int watch, std::uint32_t events) {
  Watch* touched = _watches.find(watch);
  if (!touched || events == 0) {
    return;
  }
  if (touched->events == 0) {
    _touchedWatches.push_back(watch);
  }
  touched->events |= events;
}

void VnodeTable::handleEventsOfWatch(int watch) {
  Watch* const touched = _watches.find(watch);
  if (!touched) {
    return;
  }
  const std::uint32_t events = std::exchange(touched->events, 0);
  for (int descriptor = touched->firstDescriptor; descriptor >= 0;
       descriptor = vnode(descriptor).next) {
    handleEvents(descriptor, events);
  }
  if (events & IN_IGNORED) {
    endWatch(watch);
  }
}

void VnodeTable::handleEvents(int descriptor, std::uint32_t events) {
  std::uint32_t notes = 0;
  if (events & IN_MOVE_SELF) {
    handleRename(descriptor);
    notes |= NOTE_RENAME;
  }
  if (events & IN_DELETE_SELF) {
    // The event of the last name's removal may have come along; it has no more to tell.
    notes |= objectRemoved(descriptor);
    events &= ~std::uint32_t{IN_ATTRIB};
  }
  if (events & changeEvents) {
    notes |= changes(descriptor, events);
  }
  if (events & IN_UNMOUNT) {
    notes |= volumeRemoved(descriptor);
  }
  post(descriptor, notes);
}

std::uint32_t VnodeTable::changes(int descriptor, std::uint32_t events) {
  Vnode& watched = vnode(descriptor);
  bool nameIsGone = watched.isInSight && events & IN_ATTRIB;
  auto state = _whereabouts.look(descriptor);
  if (!state && hasFreshRename(watched.watch)) {
    nameIsGone = false;
    handleRename(descriptor);
    state = _whereabouts.look(descriptor);
  }
  if (state) {
    return notesBetween(std::exchange(watched.state, *state), *state, events);
  }
  if (nameIsGone && isFolderThere(_whereabouts.location(descriptor))) {
    return nameRemoved(descriptor) | notesUnseen(events & ~std::uint32_t{IN_ATTRIB});
  }
  // What has no name left gets no new one.
  return notesUnseen(events) & (watched.state.links == 0 ? ~NOTE_LINK : ~0U);
}

/// Whether a rename of the object has been told of since its events were taken up.
bool VnodeTable::hasFreshRename(int watch) {
  readEvents();
  const Watch* touched = _watches.find(watch);
  return touched && touched->events & IN_MOVE_SELF;
}

void VnodeTable::handleRename(int descriptor) {
  Vnode& watched = vnode(descriptor);
  watched.isInSight = false;
  _whereabouts.noteRename(descriptor);
  if (_watches.hasParent(descriptor)) {
    _watches.removeParent(descriptor);
    if (_whereabouts.look(descriptor)) {
      _watches.addParent(descriptor, _whereabouts.location(descriptor));
    }
  }
}

/// The path does not lead to the object any more, and that is not because of a rename: one of its
/// names was unlinked or replaced. It may have others.
std::uint32_t VnodeTable::nameRemoved(int descriptor) {
  FileState& state = vnode(descriptor).state;
  state.links = state.isDirectory() || state.links == 0 ? 0 : state.links - 1;
  return NOTE_DELETE | NOTE_LINK;
}

std::uint32_t VnodeTable::objectRemoved(int descriptor) {
  vnode(descriptor).isInSight = false;
  const bool isNews = std::exchange(vnode(descriptor).state.links, 0U) != 0;
  return isNews ? NOTE_DELETE | NOTE_LINK : 0;
}

std::uint32_t VnodeTable::volumeRemoved(int descriptor) {
  vnode(descriptor).isInSight = false;
  const bool isNews = !std::exchange(vnode(descriptor).isRevoked, true);
  return isNews ? NOTE_REVOKE : 0;
}

void VnodeTable::handleRemovedChildren() {
  for (const int descriptor : std::exchange(_removedChildren, {})) {
    // Another directory may have had that name for a moment.
    if (!_whereabouts.look(descriptor)) {
      post(descriptor, objectRemoved(descriptor));
    }
  }
}

void VnodeTable::endWatch(int watch) {
  int descriptor = _watches.find(watch)->firstDescriptor;
  while (descriptor >= 0) {
    vnode(descriptor).watch = -1;
    descriptor = std::exchange(vnode(descriptor).next, -1);
  }
  _watches.remove(watch);
}

}  // namespace quennel
