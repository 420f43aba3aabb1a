#include "platform/linux/watch/InotifyKernelQueueFactory.h"

namespace quennel {

InotifyKernelQueueFactory::~InotifyKernelQueueFactory() {
  for (const auto& queue : _queues) {
    if (const auto living = queue.lock()) {
      living->end();
    }
  }
}

std::shared_ptr<KernelQueue> InotifyKernelQueueFactory::kqueue() {
  auto queue = InotifyKernelQueue::create();
  if (queue) {
    _queues.push_back(queue);
  }
  return queue;
}

}  // namespace quennel
