#pragma once

#include "platform/linux/base/FileDescriptor.h"

namespace quennel {

/// The right to ask a file manager, which one process of a session has at a time: a display has one
/// drag, and a second one takes its data away. Waits for it when made.
class Turn {
 public:
  Turn();

 private:
  FileDescriptor _lock;
};

}  // namespace quennel
