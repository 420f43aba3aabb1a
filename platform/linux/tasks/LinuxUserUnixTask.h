#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/UserUnixTask.h"
#include "platform/linux/tasks/ScriptRun.h"

namespace quennel {

/// A script that is ready to run; who starts it owns the run and outlives the task.
class LinuxUserUnixTask final : public UserUnixTask {
 public:
  using Start = std::function<void(ScriptRun::Request)>;

  LinuxUserUnixTask(Start start, std::string path);

  void setStandardOutput(std::shared_ptr<Pipe::FileHandleForWriting> standardOutput) override;
  void executeWithArguments(const std::vector<std::string>& arguments,
                            CompletionHandler completion) override;

 private:
  Start _start;
  std::string _path;
  std::shared_ptr<Pipe::FileHandleForWriting> _standardOutput;
};

}  // namespace quennel
