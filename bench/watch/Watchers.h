#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <unordered_map>
#include <vector>

#include "platform/Workspace.h"
#include "platform/linux/base/FileDescriptor.h"
#include "platform/linux/events/EventRunLoop.h"
#include "platform/linux/notifications/LocalNotificationCenter.h"
#include "platform/linux/watch/InotifyKernelQueueFactory.h"
#include "watch/VDKQueue.h"

namespace quennel::bench {

/// What a watcher saw: when it last told of something, and how often it did.
class Arrivals {
 public:
  using Clock = std::chrono::steady_clock;

  void note();
  int count() const { return _count; }
  /// Waits until more than `count` have come; when the first of them came.
  Clock::time_point waitForMoreThan(int count);
  /// Waits until none comes for a while.
  void waitForSilence();

 private:
  std::atomic<Clock::rep> _first{0};
  std::atomic<bool> _isAwaited{false};
  std::atomic<int> _count{0};
};

class Watcher {
 public:
  virtual ~Watcher() = default;
  virtual void add(const std::vector<std::string>& paths) = 0;
  virtual Arrivals& arrivals() = 0;
};

/// The watcher of the helper; the delegate is called by the run loop, which another thread runs.
class OurWatcher final : public Watcher, private VDKQueueDelegate {
 public:
  explicit OurWatcher(RunLoop& runLoop);
  ~OurWatcher() override;

  void add(const std::vector<std::string>& paths) override;
  Arrivals& arrivals() override { return _arrivals; }

 private:
  class SilentWorkspace final : public Workspace {
    void activateFileViewerSelectingItems(const std::vector<std::string>&) override {}
    bool openFile(const std::string&) override { return false; }
  };
  void receivedNotification(VDKQueue&, std::string_view, std::string_view) override {
    _arrivals.note();
  }

  Arrivals _arrivals;
  SilentWorkspace _workspace;
  LocalNotificationCenter _center;
  InotifyKernelQueueFactory _factory;
  std::shared_ptr<VDKQueue> _queue;
};

/// Bare inotify, with what any watcher needs: the paths by their watches, a thread that waits, and
/// a second one that every event is handed to.
class BareWatcher final : public Watcher {
 public:
  BareWatcher();
  ~BareWatcher() override;

  void add(const std::vector<std::string>& paths) override;
  Arrivals& arrivals() override { return _arrivals; }

 private:
  void waitForEvents();
  void handOver(const char* begin, const char* end);
  void deliver();

  Arrivals _arrivals;
  FileDescriptor _inotify;
  FileDescriptor _wake;
  std::mutex _mutex;  // guards the paths and the events
  std::unordered_map<int, std::string> _paths;
  std::vector<std::string> _events;
  std::atomic<bool> _stop{false};
  std::thread _watcherThread;
  std::thread _deliveryThread;
};

}  // namespace quennel::bench
