#include "platform/linux/processes/BackgroundProgram.h"

#include <fcntl.h>
#include <spawn.h>
#include <unistd.h>

#include <system_error>

#include "platform/linux/base/FileDescriptor.h"
#include "platform/linux/processes/Spawn.h"

namespace quennel {

bool startInBackground(const std::vector<std::string>& arguments) {
  const FileDescriptor nowhere(open("/dev/null", O_WRONLY | O_CLOEXEC));
  if (!nowhere) {
    return false;
  }
  try {
    const SpawnAttributes attributes;
    const SpawnFileActions actions(nowhere);
    pid_t pid = -1;
    return posix_spawn(&pid, arguments.front().c_str(), actions.get(), attributes.get(),
                       spawnArguments(arguments).data(), environ) == 0;
  } catch (const std::system_error&) {
    return false;
  }
}

}  // namespace quennel
