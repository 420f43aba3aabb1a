#pragma once

#include <map>
#include <string>
#include <vector>

namespace quennel::test {

struct CommandResult {
  /// The exit status, or 128 and the number of the signal that ended it.
  int status = 0;
  std::string output;
  std::string errors;
};

/// Runs a program to its end. `arguments` starts with the program, looked up in PATH; `environment`
/// is set on top of this process's own (an empty value unsets); `input` is what it reads. Throws
/// when it cannot be started.
CommandResult runCommand(const std::vector<std::string>& arguments,
                         const std::map<std::string, std::string>& environment = {},
                         const std::string& input = {});

/// Whether a program of this name is in PATH.
bool hasCommand(const std::string& name);

}  // namespace quennel::test
