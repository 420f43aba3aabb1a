#pragma once

#include <string_view>

namespace quennel {

class VDKQueue;

/// Who is told what happened to watched paths.
class VDKQueueDelegate {
 public:
  virtual ~VDKQueueDelegate() = default;

  /// `notification` is one of the names in VDKQueue.h, `path` what was given to `addPath`. Called
  /// on the main thread.
  virtual void receivedNotification(VDKQueue& queue, std::string_view notification,
                                    std::string_view path) = 0;
};

}  // namespace quennel
