#include "platform/linux/watch/VnodeTable.h"

#include <fcntl.h>
#include <stdlib.h>

#include <cerrno>
#include <utility>

#include "platform/linux/mounts/MountTable.h"

namespace quennel {

namespace {

constexpr std::uint32_t allNotes =
    NOTE_DELETE | NOTE_WRITE | NOTE_EXTEND | NOTE_ATTRIB | NOTE_LINK | NOTE_RENAME | NOTE_REVOKE;

/// What a directory's registration needs of its watch. Entries that come and go in a directory of
/// which only the renaming matters wake nobody.
std::uint32_t directoryEvents(std::uint32_t wanted) {
  std::uint32_t events = IN_MOVE_SELF | IN_DELETE_SELF | IN_DONT_FOLLOW;
  if (wanted & (NOTE_WRITE | NOTE_LINK)) {
    events |= IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO;
  }
  // One that is replaced by a rename tells so by this event, too.
  return wanted & (NOTE_ATTRIB | NOTE_DELETE | NOTE_LINK) ? events | IN_ATTRIB : events;
}

/// Whether the path says by itself where its object is: from the root, and by the object's name.
bool isStraight(std::string_view path) {
  const std::string_view text = path.substr(0, path.find_last_not_of('/') + 1);
  return path.starts_with('/') && !text.ends_with("/.") && !text.ends_with("/..");
}

std::optional<std::string> resolved(const char* path) {
  char* found = realpath(path, nullptr);
  if (!found) {
    return std::nullopt;
  }
  std::string text = found;
  free(found);
  return text;
}

void describeFailure(int code, const SharedText& path, Error* error) {
  if (error) {
    *error = {code, code == ENOSPC ? Error::Kind::TooManyWatches : Error::Kind::Watching,
              std::string(path.view())};
  }
}

}  // namespace

bool VnodeTable::isOpen(int descriptor) const {
  return descriptor >= 0 && static_cast<std::size_t>(descriptor) < _vnodes.size() &&
         _vnodes[static_cast<std::size_t>(descriptor)].path;
}

int VnodeTable::open(const SharedText& path, Error* error) {
  const auto sighting = watchPath(path);
  if (!sighting) {
    describeFailure(errno, path, error);
    return -1;
  }
  return insert(path, *sighting);
}

std::optional<VnodeTable::Sighting> VnodeTable::watchPath(const SharedText& path) {
  auto sighting = isStraight(path.view()) ? watchObjectAt(path.c_str()) : std::nullopt;
  if (sighting ? !sighting->state.isSymbolicLink() : isStraight(path.view())) {
    return sighting;
  }
  if (sighting) {
    _watches.release(sighting->watch);
  }
  auto location = resolved(path.c_str());
  sighting = location ? watchObjectAt(location->c_str()) : std::nullopt;
  if (sighting) {
    sighting->location = std::move(location);
  }
  return sighting;
}

std::optional<VnodeTable::Sighting> VnodeTable::watchObjectAt(const char* path) {
  const int watch = _watches.add(path, Watches::fileEvents | IN_MASK_ADD);
  if (watch < 0) {
    return std::nullopt;
  }
  if (_watches.find(watch)) {
    update();  // what happened to the object so far does not concern the new descriptor
    if (!_watches.find(watch)) {
      return watchObjectAt(path);  // the object is no more, and something else may be there
    }
  }
  const auto state = FileState::atPath(path);
  if (!state) {
    const int code = errno;
    _watches.release(watch);
    errno = code;
    return std::nullopt;
  }
  return Sighting{watch, *state, std::nullopt};
}

int VnodeTable::insert(const SharedText& path, const Sighting& sighting) {
  if (_closedDescriptors.empty()) {
    _closedDescriptors.push_back(static_cast<int>(_vnodes.size()));
    _vnodes.emplace_back();
  }
  const int descriptor = _closedDescriptors.back();
  _closedDescriptors.pop_back();
  Vnode& opened = vnode(descriptor);
  opened.path = path;
  opened.state = sighting.state;
  opened.watch = sighting.watch;
  if (Watch* shared = _watches.find(sighting.watch)) {
    opened.next = std::exchange(shared->firstDescriptor, descriptor);
  } else {
    _watches.insert(sighting.watch, descriptor);
  }
  if (sighting.location) {
    _whereabouts.setLocation(descriptor, *sighting.location);
  }
  return descriptor;
}

void VnodeTable::close(int descriptor) {
  if (!isOpen(descriptor)) {
    return;
  }
  _watches.removeParent(descriptor);
  leaveWatch(descriptor);
  _whereabouts.forget(descriptor);
  vnode(descriptor) = {};
  _closedDescriptors.push_back(descriptor);
}

void VnodeTable::leaveWatch(int descriptor) {
  const int watch = std::exchange(vnode(descriptor).watch, -1);
  Watch* shared = _watches.find(watch);
  if (!shared) {
    return;
  }
  int* link = &shared->firstDescriptor;
  while (*link != descriptor) {
    link = &vnode(*link).next;
  }
  *link = vnode(descriptor).next;
  if (shared->firstDescriptor < 0) {
    _watches.remove(watch);
    _watches.release(watch);
  }
}

bool VnodeTable::submit(const KernelEvent& change) {
  const bool isKnown = change.filter == EVFILT_VNODE && change.flags & EV_ADD;
  if (!isKnown || !isOpen(change.ident)) {
    return false;
  }
  Vnode& watched = vnode(change.ident);
  watched.target = change.udata;
  watched.wanted = static_cast<std::uint8_t>(change.fflags & allNotes);
  watched.pending &= watched.wanted;
  if (watched.state.isDirectory()) {
    watchDirectory(change.ident);
  }
  if (watched.wanted & NOTE_REVOKE && !_mounts) {
    _mounts.reset(::open(MountTable::path, O_RDONLY | O_CLOEXEC));
  }
  return true;
}

/// Narrows the watch to what the registrations for the directory need.
void VnodeTable::watchDirectory(int descriptor) {
  const int watch = vnode(descriptor).watch;
  const Watch* shared = _watches.find(watch);
  if (!shared) {
    return;
  }
  std::uint32_t wanted = 0;
  for (int other = shared->firstDescriptor; other >= 0; other = vnode(other).next) {
    wanted |= vnode(other).wanted;
  }
  const std::string location = _whereabouts.location(descriptor);
  const std::uint32_t parentEvents = _watches.isOnParent(watch) ? IN_DELETE : 0;
  const int found = _watches.add(location.c_str(), directoryEvents(wanted) | parentEvents);
  if (found >= 0) {
    _watches.release(found);  // another one, if the directory was replaced meanwhile
  }
  _watches.removeParent(descriptor);
  if (vnode(descriptor).wanted & (NOTE_DELETE | NOTE_LINK)) {
    _watches.addParent(descriptor, location);
  }
}

void VnodeTable::post(int descriptor, std::uint32_t notes) {
  Vnode& watched = vnode(descriptor);
  const auto wanted = static_cast<std::uint8_t>(notes & watched.wanted);
  watched.pending |= wanted;
  if (wanted != 0 && !watched.isReady) {
    watched.isReady = true;
    _ready.push_back(descriptor);
  }
}

bool VnodeTable::takeEvent(KernelEvent& event) {
  while (!_ready.empty()) {
    const int descriptor = _ready.front();
    _ready.pop_front();
    Vnode& watched = vnode(descriptor);
    // Closed descriptors leave their place in the line, which then belongs to nobody, or to the
    // next one of that number.
    if (std::exchange(watched.isReady, false) && watched.pending != 0) {
      event = {descriptor,
               EVFILT_VNODE,
               EV_ADD | EV_ENABLE | EV_CLEAR,
               std::exchange(watched.pending, std::uint8_t{0}),
               0,
               watched.target};
      return true;
    }
  }
  return false;
}

}  // namespace quennel
