#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/UserUnixTask.h"

namespace quennel {

class LinuxUserScripts;

/// A script that is ready to run. `LinuxUserScripts` owns the run and outlives the task.
class LinuxUserUnixTask final : public UserUnixTask {
 public:
  LinuxUserUnixTask(LinuxUserScripts& scripts, std::string path);

  void setStandardOutput(std::shared_ptr<Pipe::FileHandleForWriting> standardOutput) override;
  void executeWithArguments(const std::vector<std::string>& arguments,
                            CompletionHandler completion) override;

 private:
  LinuxUserScripts& _scripts;
  std::string _path;
  std::shared_ptr<Pipe::FileHandleForWriting> _standardOutput;
};

}  // namespace quennel
