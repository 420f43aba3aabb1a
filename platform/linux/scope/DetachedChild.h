#pragma once

#include <functional>

#include "platform/linux/base/FileDescriptor.h"

namespace quennel {

/// Starts a process that runs `body` and ends. `body` gets a message socket (SOCK_SEQPACKET) to the
/// one that is returned, or none when the process could not be started. Nothing else of this
/// program's stays open in the child, so that no connection or lock lives on through it, and nobody
/// has to wait for its end. Should it hang, it is killed `mostSeconds` after its start, or after it
/// last called `alarm` itself. Where this program has other threads, `body` must keep to what is
/// safe in a signal handler, but for allocating memory.
FileDescriptor startDetachedChild(unsigned int mostSeconds,
                                  const std::function<void(int socket)>& body);

/// Whether there is something to read, or the other end was closed, within the time.
bool waitForInput(int descriptor, int milliseconds);

}  // namespace quennel
