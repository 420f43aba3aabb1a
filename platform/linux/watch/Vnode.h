#pragma once

#include <cstdint>
#include <memory>

#include "platform/KernelQueue.h"
#include "platform/linux/watch/FileState.h"

namespace quennel {

/// One open descriptor of a kernel queue, with its registration.
struct Vnode {
  FileState state;  // at the last look
  SharedText path;  // null: the descriptor is not open
  std::weak_ptr<KernelEventTarget> target;
  /// -1 when the kernel has ended the watch, with the object.
  int watch = -1;
  /// The next descriptor that is open on the same object; -1 after the last.
  int next = -1;
  std::uint8_t wanted = 0;
  std::uint8_t pending = 0;
  bool isReady = false;
  /// Whether the last look found the object.
  bool isInSight = true;
  /// Whether the volume is gone.
  bool isRevoked = false;
};

}  // namespace quennel
