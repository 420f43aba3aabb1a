#include "platform/linux/watch/Watches.h"

#include <cerrno>

#include "platform/values/Path.h"

namespace quennel {

int Watches::add(const char* path, std::uint32_t events) {
  int watch = _inotify.addWatch(path, events);
  if (watch < 0 && errno == ENOSPC && releaseParents()) {
    watch = _inotify.addWatch(path, events);
  }
  return watch;
}

void Watches::release(int watch) {
  if (!find(watch) && !isOnParent(watch)) {
    _inotify.removeWatch(watch);
  }
}

bool Watches::isOnObjectAt(int watch, const char* path) {
  const int found = _inotify.addWatch(path, fileEvents | IN_MASK_ADD);
  if (found >= 0) {
    release(found);
  }
  return found == watch;
}

void Watches::addParent(int descriptor, const std::string& location) {
  if (location == "/") {
    return;
  }
  const std::string parent = deletingLastPathComponent(location);
  const int watch = _inotify.addWatch(parent.c_str(), IN_DELETE | IN_ONLYDIR | IN_MASK_ADD);
  if (watch >= 0) {
    _parents.insert(descriptor, watch, lastPathComponent(location));
  }
}

void Watches::removeParent(int descriptor) {
  if (const auto watch = _parents.remove(descriptor)) {
    release(*watch);
  }
}

/// Answers whether there were any.
bool Watches::releaseParents() {
  const auto watches = _parents.removeAll();
  for (const int watch : watches) {
    release(watch);
  }
  return !watches.empty();
}

}  // namespace quennel
