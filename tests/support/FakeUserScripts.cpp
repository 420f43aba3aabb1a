#include "tests/support/FakeUserScripts.h"

#include <cerrno>
#include <utility>

namespace quennel::test {

class FakeUserScripts::Task final : public UserUnixTask {
 public:
  Task(FakeUserScripts& scripts, std::string path) : _scripts(scripts), _path(std::move(path)) {}

  void setStandardOutput(std::shared_ptr<Pipe::FileHandleForWriting> standardOutput) override {
    _standardOutput = std::move(standardOutput);
  }

  void executeWithArguments(const std::vector<std::string>& arguments,
                            CompletionHandler completion) override {
    _scripts.executions.push_back({_path, arguments});
    _scripts._threads.emplace_back([&completions = _scripts._completions,
                                    script = _scripts.scripts.at(_path),
                                    standardOutput = std::move(_standardOutput),
                                    completion = std::move(completion)]() mutable {
      if (standardOutput) {
        standardOutput->writeData(script.error ? "" : script.output);
        standardOutput->closeFile();
      }
      completion(script.error);
      completion = nullptr;  // what it holds is part of the run
      ++completions;
    });
  }

 private:
  FakeUserScripts& _scripts;
  std::string _path;
  std::shared_ptr<Pipe::FileHandleForWriting> _standardOutput;
};

FakeUserScripts::~FakeUserScripts() {
  for (std::thread& thread : _threads) {
    thread.join();
  }
}

std::optional<std::string> FakeUserScripts::applicationScriptsDirectory(Error* error) {
  if (!directory && error != nullptr) {
    *error = directoryError;
  }
  return directory;
}

std::unique_ptr<UserUnixTask> FakeUserScripts::createTask(const std::string& path, Error* error) {
  if (scripts.contains(path)) {
    return std::make_unique<Task>(*this, path);
  }
  if (error != nullptr) {
    *error = {ENOENT, Error::Kind::StartingScript, path};
  }
  return nullptr;
}

}  // namespace quennel::test
