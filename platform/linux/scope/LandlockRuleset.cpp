#include "platform/linux/scope/LandlockRuleset.h"

#include <linux/landlock.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace quennel {

namespace {

/// Every right by which a tree changes, as far as the version has it; the kernel refuses rights
/// that it does not know. Changes that a version cannot restrain are left to the work: below 2 the
/// kernel refuses to move or link between folders, below 3 a file can be truncated by its path.
unsigned long long changesOfVersion(int version) {
  constexpr unsigned long long truncate = 1ULL << 14U;  // newer than the packaged headers
  unsigned long long changes = LANDLOCK_ACCESS_FS_WRITE_FILE | LANDLOCK_ACCESS_FS_REMOVE_DIR |
                               LANDLOCK_ACCESS_FS_REMOVE_FILE | LANDLOCK_ACCESS_FS_MAKE_CHAR |
                               LANDLOCK_ACCESS_FS_MAKE_DIR | LANDLOCK_ACCESS_FS_MAKE_REG |
                               LANDLOCK_ACCESS_FS_MAKE_SOCK | LANDLOCK_ACCESS_FS_MAKE_FIFO |
                               LANDLOCK_ACCESS_FS_MAKE_BLOCK | LANDLOCK_ACCESS_FS_MAKE_SYM;
  if (version >= 2) {
    changes |= LANDLOCK_ACCESS_FS_REFER;
  }
  if (version >= 3) {
    changes |= truncate;
  }
  return changes;
}

long createRuleset(const landlock_ruleset_attr* attributes, std::size_t size, unsigned flags) {
  return syscall(SYS_landlock_create_ruleset, attributes, size, flags);
}

}  // namespace

int LandlockRuleset::kernelVersion() {
  const long version = createRuleset(nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
  return version < 0 ? 0 : static_cast<int>(version);
}

LandlockRuleset::LandlockRuleset(int version) : _changes(changesOfVersion(version)) {
  const landlock_ruleset_attr attributes{.handled_access_fs = _changes};
  _ruleset = FileDescriptor(static_cast<int>(createRuleset(&attributes, sizeof attributes, 0)));
  if (!_ruleset) {
    throw std::system_error(errno, std::generic_category(), "landlock_create_ruleset");
  }
}

void LandlockRuleset::allowBeneath(int folder) {
  const landlock_path_beneath_attr rule{.allowed_access = _changes, .parent_fd = folder};
  if (syscall(SYS_landlock_add_rule, _ruleset.get(), LANDLOCK_RULE_PATH_BENEATH, &rule, 0) != 0) {
    throw std::system_error(errno, std::generic_category(), "landlock_add_rule");
  }
}

int LandlockRuleset::restrictThread() const {
  // A thread that could gain privileges by starting a program may not be confined.
  const bool confined = prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
                        syscall(SYS_landlock_restrict_self, _ruleset.get(), 0) == 0;
  return confined ? 0 : errno;
}

}  // namespace quennel
