#pragma once

#include <chrono>
#include <cstdint>
#include <memory>

#include "platform/Error.h"
#include "platform/values/SharedText.h"

namespace quennel {

/// The one filter there is: changes of files and directories.
inline constexpr std::int16_t EVFILT_VNODE = -4;

/// What a change record asks for: register, deliver, and start afresh after each delivery.
inline constexpr std::uint16_t EV_ADD = 0x0001;
inline constexpr std::uint16_t EV_ENABLE = 0x0004;
inline constexpr std::uint16_t EV_CLEAR = 0x0020;

/// The kinds of change. Where one row names several, an event carries all of them:
/// overwritten WRITE · grown WRITE, EXTEND · shortened WRITE, ATTRIB · mode, owner, dates or
/// extended attributes ATTRIB · link added LINK · name unlinked or replaced DELETE, LINK · renamed
/// RENAME · directory entry made, removed or renamed WRITE, a subdirectory made or removed also
/// LINK · volume unmounted REVOKE.
inline constexpr std::uint32_t NOTE_DELETE = 0x01;
inline constexpr std::uint32_t NOTE_WRITE = 0x02;
inline constexpr std::uint32_t NOTE_EXTEND = 0x04;
inline constexpr std::uint32_t NOTE_ATTRIB = 0x08;
inline constexpr std::uint32_t NOTE_LINK = 0x10;
inline constexpr std::uint32_t NOTE_RENAME = 0x20;
inline constexpr std::uint32_t NOTE_REVOKE = 0x40;

/// What a registration may refer to.
class KernelEventTarget {
 public:
  KernelEventTarget() = default;
  KernelEventTarget(const KernelEventTarget&) = delete;
  KernelEventTarget& operator=(const KernelEventTarget&) = delete;
  virtual ~KernelEventTarget() = default;
};

/// A change to submit, or an event that was waited for.
struct KernelEvent {
  /// The watched descriptor.
  int ident = -1;
  std::int16_t filter = 0;
  std::uint16_t flags = 0;
  /// The kinds to watch for, or those that fired.
  std::uint32_t fflags = 0;
  std::intptr_t data = 0;
  /// Handed back with every event of the registration. It does not own: whoever takes an event
  /// locks it first, and finds out that way whether the target still lives.
  std::weak_ptr<KernelEventTarget> udata;
};

/// A queue of changes to watched files. Every operation may be called from any thread, also while
/// another one waits.
///
/// A descriptor stands for the file-system object that its path named when it was opened, and goes
/// on standing for it after a rename or a delete. It is a number of this queue's own, not one of
/// the process: it holds nothing open, so it neither counts against the limit of open files nor
/// keeps a volume from being unmounted.
class KernelQueue {
 public:
  virtual ~KernelQueue() = default;

  /// Opens `path` for event notification only. -1 when it cannot be opened, or when the system
  /// watches no more files for this user.
  virtual int open(const SharedText& path, Error* error = nullptr) = 0;

  /// Ends the descriptor, its registration, and its events not yet returned. The number may come
  /// back from the next `open`.
  virtual void close(int descriptor) = 0;

  /// Submits a change record and does not wait. A record with `EV_ADD` registers its descriptor;
  /// one for a descriptor that is registered already replaces its mask and its reference. 0, or -1
  /// for a descriptor that is not open or a record that asks for something else.
  virtual int kevent(const KernelEvent& change) = 0;

  /// Waits up to `timeout` for one event. 1 when `event` was filled, 0 when the time is over, -1
  /// when the wait was interrupted or failed. An event carries the kinds that fired since the last
  /// one for its descriptor.
  virtual int kevent(KernelEvent& event, std::chrono::nanoseconds timeout) = 0;
};

/// Where kernel queues come from.
///
/// A thread that waits on a queue for as long as the process runs cannot be told to stop. So the
/// end of this object stands, for its queues, for the end of the process: from then on no wait on
/// any of them returns. Its destructor gives a thread that has just been handed an event the time
/// to come back for the next one; what such a thread uses meanwhile has to outlive this object.
class KernelQueueFactory {
 public:
  KernelQueueFactory() = default;
  KernelQueueFactory(const KernelQueueFactory&) = delete;
  KernelQueueFactory& operator=(const KernelQueueFactory&) = delete;
  virtual ~KernelQueueFactory() = default;

  /// Creates a queue; null when the system has none left to give. Whoever holds the last reference
  /// closes it.
  virtual std::shared_ptr<KernelQueue> kqueue() = 0;
};

}  // namespace quennel
