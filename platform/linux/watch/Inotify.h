#pragma once

#include <sys/inotify.h>

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <unordered_set>

#include "platform/linux/base/FileDescriptor.h"

namespace quennel {

/// An inotify instance. A watch is on an object, not on its path: the same object gives the same
/// watch whatever path leads to it. Watch numbers are not used twice.
class Inotify {
 public:
  /// The name is empty, or that of the entry of the watched directory that the event is about.
  using Visit = std::function<void(const inotify_event& event, const char* name)>;

  /// Has no descriptor when the system has no instance left for this user.
  Inotify();

  explicit operator bool() const { return static_cast<bool>(_descriptor); }
  int descriptor() const { return _descriptor.get(); }

  /// The watch of the object at `path`, made or changed; -1, and errno set, when there is none.
  int addWatch(const char* path, std::uint32_t mask);
  void removeWatch(int watch);

  /// Visits the events that one read delivers, without waiting.
  void read(const Visit& visit);

  /// The watches that the kernel still has; nothing when it does not say.
  std::optional<std::unordered_set<int>> liveWatches() const;

 private:
  FileDescriptor _descriptor;
  alignas(inotify_event) std::array<char, 16384> _buffer;
};

}  // namespace quennel
