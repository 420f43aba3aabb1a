#include "platform/linux/tasks/LinuxUserUnixTask.h"

#include <utility>

#include "platform/linux/tasks/LinuxUserScripts.h"

namespace quennel {

LinuxUserUnixTask::LinuxUserUnixTask(LinuxUserScripts& scripts, std::string path)
    : _scripts(scripts), _path(std::move(path)) {}

void LinuxUserUnixTask::setStandardOutput(
    std::shared_ptr<Pipe::FileHandleForWriting> standardOutput) {
  _standardOutput = std::move(standardOutput);
}

void LinuxUserUnixTask::executeWithArguments(const std::vector<std::string>& arguments,
                                             CompletionHandler completion) {
  _scripts.start({_path, arguments, std::move(_standardOutput), std::move(completion)});
}

}  // namespace quennel
