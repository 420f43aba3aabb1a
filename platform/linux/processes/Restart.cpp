#include "platform/linux/processes/Restart.h"

#include <stdlib.h>
#include <unistd.h>

#include <vector>

#include "platform/linux/processes/Spawn.h"

namespace quennel {

void restartWithVariable(const std::string& executable, const char* name,
                         const std::string& value) {
  const std::vector<std::string> arguments{executable};
  if (setenv(name, value.c_str(), 1) == 0) {
    execv(executable.c_str(), spawnArguments(arguments).data());
  }
}

}  // namespace quennel
