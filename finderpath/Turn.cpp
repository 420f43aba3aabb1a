#include "finderpath/Turn.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <cstdlib>
#include <string>

namespace quennel {

Turn::Turn() {
  const char* const folder = std::getenv("XDG_RUNTIME_DIR");
  if (!folder) {
    return;  // nothing that a whole session shares: go without
  }
  const std::string path = std::string(folder) + "/quennel-finder-path.lock";
  _lock.reset(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
  while (_lock && flock(_lock.get(), LOCK_EX) != 0 && errno == EINTR) {
  }
}

}  // namespace quennel
