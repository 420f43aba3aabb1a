#include "watch/VDKQueuePathEntry.h"

#include <mutex>
#include <utility>

namespace quennel {

namespace {

/// Guards the paths of all entries: there are ten thousands of them, and it is held for as long as
/// copying a pointer takes.
std::mutex pathMutex;

}  // namespace

std::shared_ptr<VDKQueuePathEntry> VDKQueuePathEntry::create(std::shared_ptr<KernelQueue> queue,
                                                             const SharedText& path,
                                                             std::uint32_t subscriptionFlags) {
  const int descriptor = queue->open(path);
  if (descriptor < 0) {
    return nullptr;
  }
  return std::make_shared<VDKQueuePathEntry>(Private(), std::move(queue), path, descriptor,
                                             subscriptionFlags);
}

VDKQueuePathEntry::VDKQueuePathEntry(Private, std::shared_ptr<KernelQueue> queue,
                                     const SharedText& path, int watchedFD,
                                     std::uint32_t subscriptionFlags)
    : _path(path),
      _watchedFD(watchedFD),
      _subscriptionFlags(subscriptionFlags),
      _queue(std::move(queue)) {}

VDKQueuePathEntry::~VDKQueuePathEntry() {
  if (_watchedFD >= 0) {
    _queue->close(_watchedFD);
  }
  _watchedFD = -1;
}

SharedText VDKQueuePathEntry::path() const {
  const std::lock_guard lock(pathMutex);
  return _path;
}

void VDKQueuePathEntry::setPath(const SharedText& path) {
  const std::lock_guard lock(pathMutex);
  _path = path;
}

}  // namespace quennel
