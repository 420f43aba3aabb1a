#pragma once

#include <cerrno>
#include <string>
#include <system_error>
#include <vector>

#include "platform/FileManager.h"

namespace quennel::bench {

/// The result of a system call that has to succeed.
template <typename Result>
Result checked(Result result, const std::string& what) {
  if (result < 0) {
    throw std::system_error(errno, std::generic_category(), what);
  }
  return result;
}

void writeFile(const std::string& path, const std::string& contents);

/// Copies with our file manager; throws when it fails.
void copyItem(FileManager& files, const std::string& path, const std::string& toPath);

/// Runs a program found through PATH to its end; throws when it fails.
void runProgram(const std::vector<std::string>& arguments);

/// Lets what was written before go to disk, so that it does not weigh on what is measured next.
void settle(const std::string& folder);

}  // namespace quennel::bench
