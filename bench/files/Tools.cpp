#include "bench/files/Tools.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>

#include "platform/linux/base/FileDescriptor.h"

namespace quennel::bench {

void writeFile(const std::string& path, const std::string& contents) {
  const FileDescriptor file(
      checked(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644), path));
  for (std::size_t written = 0; written < contents.size();) {
    written += static_cast<std::size_t>(
        checked(::write(file.get(), contents.data() + written, contents.size() - written), path));
  }
}

void copyItem(FileManager& files, const std::string& path, const std::string& toPath) {
  Error error;
  if (!files.copyItemAtPath(path, toPath, &error)) {
    throw std::runtime_error(error.description());
  }
}

void runProgram(const std::vector<std::string>& arguments) {
  std::vector<char*> pointers;
  for (const std::string& argument : arguments) {
    pointers.push_back(const_cast<char*>(argument.c_str()));
  }
  pointers.push_back(nullptr);
  pid_t child = 0;
  const int code = ::posix_spawnp(&child, pointers[0], nullptr, nullptr, pointers.data(), environ);
  if (code != 0) {
    throw std::system_error(code, std::generic_category(), arguments[0]);
  }
  int status = 0;
  checked(::waitpid(child, &status, 0), arguments[0]);
  if (status != 0) {
    throw std::runtime_error(arguments[0] + " failed");
  }
}

void settle(const std::string& folder) {
  const FileDescriptor open(
      checked(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC), folder));
  checked(::syncfs(open.get()), folder);
}

}  // namespace quennel::bench
