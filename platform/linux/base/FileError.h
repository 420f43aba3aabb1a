#pragma once

#include <string>
#include <system_error>
#include <utility>

namespace quennel {

/// A system call on a file failed.
class FileError : public std::system_error {
 public:
  FileError(int code, std::string path)
      : std::system_error(code, std::generic_category(), path), _path(std::move(path)) {}

  const std::string& path() const { return _path; }

 private:
  std::string _path;
};

}  // namespace quennel
