#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "platform/KernelQueue.h"

namespace quennel::test {

/// A kernel queue whose files exist by name only. What happens to them is for the test to say; it
/// also may hand out any event and any result of a wait. Any thread.
class FakeKernelQueue final : public KernelQueue {
 public:
  // Files

  void addFile(const std::string& path);
  void addLink(const std::string& path, const std::string& existing);
  void renameFile(const std::string& path, const std::string& newPath);
  void removeFile(const std::string& path);
  /// Something happened to the file at `path`.
  void touch(const std::string& path, std::uint32_t notes);

  // What the waits answer

  /// Queues an event as it is.
  void deliver(const KernelEvent& event);
  /// The next wait answers this at once, with no event.
  void answerNextWait(int result);
  /// Whether registrations fail from now on.
  void refuseRegistrations(bool refuse);

  // What was asked of it

  std::vector<KernelEvent> changes() const;
  std::vector<std::chrono::nanoseconds> timeouts() const;
  std::size_t openDescriptorCount() const;

  int open(const SharedText& path, Error* error = nullptr) override;
  void close(int descriptor) override;
  int kevent(const KernelEvent& change) override;
  int kevent(KernelEvent& event, std::chrono::nanoseconds timeout) override;

  /// See `KernelQueueFactory`.
  void end();

 private:
  struct Descriptor {
    std::shared_ptr<int> file;
    KernelEvent registration;
    std::uint32_t pending = 0;
  };

  void fire(const std::shared_ptr<int>& file, std::uint32_t notes);
  std::optional<KernelEvent> takeEvent();

  mutable std::mutex _mutex;  // guards all that follows
  std::condition_variable _changed;
  std::map<std::string, std::shared_ptr<int>> _files;  // names of one file share a pointer
  std::map<int, Descriptor> _descriptors;
  std::deque<int> _ready;
  std::deque<KernelEvent> _delivered;
  std::deque<int> _answers;
  std::vector<KernelEvent> _changes;
  std::vector<std::chrono::nanoseconds> _timeouts;
  std::vector<std::thread::id> _handling;  // that have an event and have not come back
  bool _refusesRegistrations = false;
  bool _ended = false;
};

class FakeKernelQueueFactory final : public KernelQueueFactory {
 public:
  ~FakeKernelQueueFactory() override;

  /// Whether the system has no queue left.
  bool refuses = false;

  /// What happens while a queue is asked for.
  std::function<void()> whileAsked;

  /// The queue that every call answers.
  FakeKernelQueue& queue() { return *_queue; }

  std::shared_ptr<KernelQueue> kqueue() override {
    if (whileAsked) {
      whileAsked();
    }
    return refuses ? nullptr : _queue;
  }

 private:
  std::shared_ptr<FakeKernelQueue> _queue = std::make_shared<FakeKernelQueue>();
};

}  // namespace quennel::test
