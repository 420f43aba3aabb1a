#pragma once

#include <cstdint>
#include <memory>

#include "platform/KernelQueue.h"

namespace quennel {

/// One watched path and the descriptor that is open on it. The end of the entry closes the
/// descriptor, and with that ends its registration.
class VDKQueuePathEntry final : public KernelEventTarget {
  struct Private {};

 public:
  /// Opens `path` for event notification. Null when it cannot be opened.
  static std::shared_ptr<VDKQueuePathEntry> create(std::shared_ptr<KernelQueue> queue,
                                                   const SharedText& path,
                                                   std::uint32_t subscriptionFlags);
  /// For `create`: takes over an open descriptor.
  VDKQueuePathEntry(Private, std::shared_ptr<KernelQueue> queue, const SharedText& path,
                    int watchedFD, std::uint32_t subscriptionFlags);
  ~VDKQueuePathEntry() override;

  /// As it was given; may be null. Any thread.
  SharedText path() const;
  void setPath(const SharedText& path);

  /// A descriptor of the kernel queue's; -1 after it is closed.
  int watchedFD() const { return _watchedFD; }
  void setWatchedFD(int descriptor) { _watchedFD = descriptor; }

  /// The kinds of change (`NOTE_…`) that the path is registered for.
  std::uint32_t subscriptionFlags() const { return _subscriptionFlags; }
  void setSubscriptionFlags(std::uint32_t flags) { _subscriptionFlags = flags; }

 private:
  SharedText _path;
  std::int32_t _watchedFD;
  std::uint32_t _subscriptionFlags;
  /// What closes the descriptor: opening for event notification only is the kernel queue's here.
  std::shared_ptr<KernelQueue> _queue;
};

}  // namespace quennel
