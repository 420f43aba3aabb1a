#pragma once

#include <string>

namespace quennel::test {

/// A fresh folder that goes away, with all it holds, with this object.
class TemporaryDirectory {
 public:
  /// Makes the folder in `parent`, or in the system's folder for temporary files.
  explicit TemporaryDirectory(const std::string& parent = {});
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
  ~TemporaryDirectory();

  const std::string& path() const { return _path; }
  /// The path of `name` in the folder.
  std::string operator/(const std::string& name) const { return _path + "/" + name; }

 private:
  std::string _path;
};

}  // namespace quennel::test
