#include "platform/linux/processes/EnvironmentRoom.h"

#include <cstdio>
#include <cstdlib>

namespace quennel {

// Before version 2.41 of glibc a variable that is set for the first time has all of them copied to
// a larger place, and the one before freed. A place that was large enough once is used again.
void makeRoomInEnvironment(std::initializer_list<const char*> names) {
  for (const char* const name : names) {
    if (setenv(name, "", 1) != 0) {
      std::perror("quennelhelper: setenv");
    }
  }
  for (const char* const name : names) {
    if (unsetenv(name) != 0) {
      std::perror("quennelhelper: unsetenv");
    }
  }
}

}  // namespace quennel
