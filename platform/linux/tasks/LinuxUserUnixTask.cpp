#include "platform/linux/tasks/LinuxUserUnixTask.h"

#include <utility>

namespace quennel {

LinuxUserUnixTask::LinuxUserUnixTask(Start start, std::string path)
    : _start(std::move(start)), _path(std::move(path)) {}

void LinuxUserUnixTask::setStandardOutput(
    std::shared_ptr<Pipe::FileHandleForWriting> standardOutput) {
  _standardOutput = std::move(standardOutput);
}

void LinuxUserUnixTask::executeWithArguments(const std::vector<std::string>& arguments,
                                             CompletionHandler completion) {
  _start({_path, arguments, std::move(_standardOutput), std::move(completion)});
}

}  // namespace quennel
