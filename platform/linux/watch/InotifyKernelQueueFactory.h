#pragma once

#include <memory>
#include <vector>

#include "platform/KernelQueue.h"
#include "platform/linux/watch/InotifyKernelQueue.h"

namespace quennel {

/// Kernel queues on inotify. Make it after everything that the handling of events uses, so that it
/// goes before that. Main thread only.
class InotifyKernelQueueFactory final : public KernelQueueFactory {
 public:
  ~InotifyKernelQueueFactory() override;

  std::shared_ptr<KernelQueue> kqueue() override;

 private:
  std::vector<std::weak_ptr<InotifyKernelQueue>> _queues;
};

}  // namespace quennel
