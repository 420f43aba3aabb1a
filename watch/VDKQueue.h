#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/KernelQueue.h"
#include "platform/NotificationCenter.h"
#include "platform/RunLoop.h"
#include "platform/Workspace.h"
#include "watch/VDKQueueDelegate.h"
#include "watch/VDKQueuePathEntry.h"

namespace quennel {

// What can happen to a watched path, by the names under which it is told and posted.
inline constexpr std::string_view VDKQueueFileRenamedNotification =
    "VDKQueueFileRenamedNotification";
inline constexpr std::string_view VDKQueueFileWrittenToNotification =
    "VDKQueueFileWrittenToNotification";
inline constexpr std::string_view VDKQueueFileDeletedNotification =
    "VDKQueueFileDeletedNotification";
inline constexpr std::string_view VDKQueueFileAttributesChangedNotification =
    "VDKQueueFileAttributesChangedNotification";
inline constexpr std::string_view VDKQueueFileSizeIncreasedNotification =
    "VDKQueueFileSizeIncreasedNotification";
inline constexpr std::string_view VDKQueueLinkCountChangedNotification =
    "VDKQueueLinkCountChangedNotification";
inline constexpr std::string_view VDKQueueAccessWasRevokedNotification =
    "VDKQueueAccessWasRevokedNotification";

/// Watches paths and tells its delegate what happens to them. A path stands for the file-system
/// object that it named when it was added, also after that was renamed or replaced.
///
/// The first path that can be watched starts a thread, which waits for events and hands them to the
/// main queue. The thread owns the watcher and never ends: there is no way to stop a watcher, only
/// to remove its paths.
///
/// Paths may be added, removed and counted on any thread. Everything else is for the main thread,
/// where the delegate is called and notifications are posted, too.
class VDKQueue : public std::enable_shared_from_this<VDKQueue> {
  struct Private {};

 public:
  /// What a watcher needs. It has to outlive the queues of the factory; see there.
  struct Services {
    KernelQueueFactory& kernelQueues;
    RunLoop& runLoop;
    Workspace& workspace;
    NotificationCenter& workspaceNotificationCenter;
  };
  using ThreadBody = std::function<void()>;
  /// Has another thread run the body; false when there can be none.
  using ThreadStarter = std::function<bool(ThreadBody)>;
  using Names = std::vector<std::string_view>;

  /// Null when there is no kernel queue to be had. Tests give a starter of their own.
  static std::shared_ptr<VDKQueue> create(const Services& services,
                                          ThreadStarter startThread = detachNewThread);

  /// For `create`.
  VDKQueue(Private, const Services& services, std::shared_ptr<KernelQueue> queue,
           ThreadStarter startThread);
  VDKQueue(const VDKQueue&) = delete;
  VDKQueue& operator=(const VDKQueue&) = delete;
  ~VDKQueue();

  /// Watches the path for all kinds of change. Does nothing for no path, for one that is watched
  /// already, and for one that cannot be opened.
  void addPath(std::optional<std::string_view> path);

  /// The same for the kinds of change (`NOTE_…`) given. A path that is watched already keeps the
  /// kinds that it was added with.
  void addPath(std::optional<std::string_view> path, std::uint32_t notifyingAbout);

  /// The same, but a path that is watched already is from now on watched for the new kinds as well.
  /// The entry, or null when the path cannot be opened.
  std::shared_ptr<VDKQueuePathEntry> addPathToQueue(std::string_view path,
                                                    std::uint32_t notifyingAbout);

  void removePath(std::optional<std::string_view> path);
  void removeAllPaths();
  std::size_t numberOfWatchedPaths() const;

  /// Not owned; may be null. Without a delegate, notifications are posted on the workspace's
  /// notification centre, with the watcher as the object and the path under "path".
  VDKQueueDelegate* delegate() const { return _delegate; }
  void setDelegate(VDKQueueDelegate* delegate) { _delegate = delegate; }

  /// Whether they are posted even when there is a delegate.
  bool alwaysPostNotifications() const { return _alwaysPostNotifications; }
  void setAlwaysPostNotifications(bool always) { _alwaysPostNotifications = always; }

  /// The body of the watcher's thread.
  void watcherThread();
  /// One pass of its loop: waits up to a second for one event and hands it on. `names` is room to
  /// work in.
  void watcherPass(KernelQueue& queue, Names& names);

 private:
  struct HashPath {
    using is_transparent = void;
    std::size_t operator()(std::string_view path) const {
      return std::hash<std::string_view>()(path);
    }
    std::size_t operator()(const SharedText& path) const { return (*this)(path.view()); }
  };
  struct EqualPaths {
    using is_transparent = void;
    bool operator()(const SharedText& one, const SharedText& other) const {
      return one.view() == other.view();
    }
    bool operator()(std::string_view one, const SharedText& other) const {
      return one == other.view();
    }
  };
  using Entries =
      std::unordered_map<SharedText, std::shared_ptr<VDKQueuePathEntry>, HashPath, EqualPaths>;

  static bool detachNewThread(ThreadBody body);

  void makeRoomForOneMore();
  std::shared_ptr<VDKQueuePathEntry> addNewPath(std::string_view path,
                                                std::uint32_t notifyingAbout);
  void registerEntry(const std::shared_ptr<VDKQueuePathEntry>& entry, std::uint32_t flags);
  void startWatcherThread();
  void handleEvent(const KernelEvent& event, Names& names);
  void deliver(const Names& names, std::string_view path);
  void post(std::string_view name, std::string_view path);

  Services _services;
  ThreadStarter _startThread;
  VDKQueueDelegate* _delegate = nullptr;
  bool _alwaysPostNotifications = false;
  /// Stands for the queue's descriptor: the last owner closes it.
  const std::shared_ptr<KernelQueue> _coreQueueFD;
  mutable std::recursive_mutex _lock;  // guards the entries and the start of the thread
  Entries _watchedPathEntries;         // by the paths as they were given
  std::atomic<bool> _keepWatcherThreadRunning = false;
};

}  // namespace quennel
