#include "watch/VDKQueue.h"

#include <array>
#include <exception>
#include <system_error>
#include <thread>
#include <utility>

namespace quennel {

namespace {

constexpr std::uint32_t allNotes =
    NOTE_DELETE | NOTE_WRITE | NOTE_EXTEND | NOTE_ATTRIB | NOTE_LINK | NOTE_RENAME | NOTE_REVOKE;

constexpr std::chrono::seconds timeBetweenLooksAtTheFlag{1};

/// In the order in which they are told when one event carries several.
constexpr std::array<std::pair<std::uint32_t, std::string_view>, 7> notificationNames{{
    {NOTE_RENAME, VDKQueueFileRenamedNotification},
    {NOTE_WRITE, VDKQueueFileWrittenToNotification},
    {NOTE_DELETE, VDKQueueFileDeletedNotification},
    {NOTE_ATTRIB, VDKQueueFileAttributesChangedNotification},
    {NOTE_EXTEND, VDKQueueFileSizeIncreasedNotification},
    {NOTE_LINK, VDKQueueLinkCountChangedNotification},
    {NOTE_REVOKE, VDKQueueAccessWasRevokedNotification},
}};

using Lock = std::lock_guard<std::recursive_mutex>;

}  // namespace

std::shared_ptr<VDKQueue> VDKQueue::create(const Services& services, ThreadStarter startThread) {
  auto queue = services.kernelQueues.kqueue();
  if (!queue) {
    return nullptr;
  }
  return std::make_shared<VDKQueue>(Private(), services, std::move(queue), std::move(startThread));
}

VDKQueue::VDKQueue(Private, const Services& services, std::shared_ptr<KernelQueue> queue,
                   ThreadStarter startThread)
    : _services(services), _startThread(std::move(startThread)), _coreQueueFD(std::move(queue)) {
  // Most paths that are looked up are new: a look into an empty bucket touches no other memory.
  _watchedPathEntries.max_load_factor(0.5F);
}

VDKQueue::~VDKQueue() {
  _keepWatcherThreadRunning = false;
  removeAllPaths();
}

void VDKQueue::addPath(std::optional<std::string_view> path) { addPath(path, allNotes); }

void VDKQueue::addPath(std::optional<std::string_view> path, std::uint32_t notifyingAbout) {
  if (!path) {
    return;
  }
  const Lock lock(_lock);
  if (!_watchedPathEntries.contains(*path)) {
    addNewPath(*path, notifyingAbout);
  }
}

std::shared_ptr<VDKQueuePathEntry> VDKQueue::addPathToQueue(std::string_view path,
                                                            std::uint32_t notifyingAbout) {
  const Lock lock(_lock);
  const auto found = _watchedPathEntries.find(path);
  if (found == _watchedPathEntries.end()) {
    return addNewPath(path, notifyingAbout);
  }
  const auto& entry = found->second;
  const std::uint32_t flags = entry->subscriptionFlags();
  if ((flags & notifyingAbout) != notifyingAbout) {
    registerEntry(entry, flags | notifyingAbout);
  }
  return entry;
}

/// Called with the lock held.
std::shared_ptr<VDKQueuePathEntry> VDKQueue::addNewPath(std::string_view path,
                                                        std::uint32_t notifyingAbout) {
  const SharedText key(path);
  auto entry = VDKQueuePathEntry::create(_coreQueueFD, key, notifyingAbout);
  if (entry) {
    makeRoomForOneMore();
    _watchedPathEntries.emplace(key, entry);
    registerEntry(entry, notifyingAbout);
  }
  return entry;
}

/// Called with the lock held. Every growth of the table touches all entries: four times the room,
/// not twice, halves that work.
void VDKQueue::makeRoomForOneMore() {
  const auto buckets = static_cast<float>(_watchedPathEntries.bucket_count());
  const auto room = static_cast<std::size_t>(buckets * _watchedPathEntries.max_load_factor());
  if (_watchedPathEntries.size() >= room) {
    _watchedPathEntries.rehash(4 * _watchedPathEntries.bucket_count());
  }
}

/// Called with the lock held. A registration that the kernel refuses stays without events.
void VDKQueue::registerEntry(const std::shared_ptr<VDKQueuePathEntry>& entry, std::uint32_t flags) {
  entry->setSubscriptionFlags(flags);
  static_cast<void>(_coreQueueFD->kevent(
      {entry->watchedFD(), EVFILT_VNODE, EV_ADD | EV_ENABLE | EV_CLEAR, flags, 0, entry}));
  startWatcherThread();
}

void VDKQueue::startWatcherThread() {
  if (_keepWatcherThreadRunning) {
    return;
  }
  _keepWatcherThreadRunning = true;
  // The thread owns the watcher as long as it runs.
  if (!_startThread([self = shared_from_this()] { self->watcherThread(); })) {
    _keepWatcherThreadRunning = false;
  }
}

bool VDKQueue::detachNewThread(ThreadBody body) {
  try {
    std::thread(std::move(body)).detach();
    return true;
  } catch (const std::system_error&) {
    return false;
  }
}

void VDKQueue::removePath(std::optional<std::string_view> path) {
  if (!path) {
    return;
  }
  const Lock lock(_lock);
  const auto entry = _watchedPathEntries.find(*path);
  if (entry != _watchedPathEntries.end()) {
    _watchedPathEntries.erase(entry);
  }
}

void VDKQueue::removeAllPaths() {
  const Lock lock(_lock);
  _watchedPathEntries.clear();
}

std::size_t VDKQueue::numberOfWatchedPaths() const {
  const Lock lock(_lock);
  return _watchedPathEntries.size();
}

void VDKQueue::watcherThread() {
  const auto queue = _coreQueueFD;
  Names names;
  names.reserve(5);
  while (_keepWatcherThreadRunning) {
    watcherPass(*queue, names);
  }
}

void VDKQueue::watcherPass(KernelQueue& queue, Names& names) {
  try {
    KernelEvent event;
    if (queue.kevent(event, timeBetweenLooksAtTheFlag) > 0) {
      handleEvent(event, names);
    }
  } catch (const std::exception&) {
    // One event is lost; the next one gets its own chance.
  }
}

void VDKQueue::handleEvent(const KernelEvent& event, Names& names) {
  if (event.filter != EVFILT_VNODE || event.fflags == 0) {
    return;
  }
  // From here on the entry lives, even if its path is removed meanwhile.
  const auto entry = std::dynamic_pointer_cast<VDKQueuePathEntry>(event.udata.lock());
  const SharedText path = entry ? entry->path() : SharedText();
  if (!path) {
    return;
  }
  _services.workspace.noteFileSystemChanged(path.view());
  names.clear();
  for (const auto& [note, name] : notificationNames) {
    if (event.fflags & note) {
      names.push_back(name);
    }
  }
  _services.runLoop.dispatchAsync(
      [self = shared_from_this(), told = names, path] { self->deliver(told, path.view()); });
}

void VDKQueue::deliver(const Names& names, std::string_view path) {
  for (const std::string_view name : names) {
    if (_delegate) {
      _delegate->receivedNotification(*this, name, path);
    }
    if (!_delegate || _alwaysPostNotifications) {
      post(name, path);
    }
  }
}

void VDKQueue::post(std::string_view name, std::string_view path) {
  _services.workspaceNotificationCenter.postNotification(
      {std::string(name), this, {{"path", std::string(path)}}});
}

}  // namespace quennel
