#pragma once

#include <functional>
#include <string>

namespace quennel {

/// A file that is written when somebody says where.
class FilePromise {
 public:
  /// Writes the file into a folder.
  using Writer = std::function<void(const std::string& folder)>;

  /// `path` is what the file will be a copy of.
  FilePromise(std::string path, Writer writer);

  const std::string& path() const { return _path; }
  std::string name() const;

  /// Has the file written into the folder; answers whether a new one is there since.
  bool keep(const std::string& folder) const;

 private:
  std::string _path;
  Writer _writer;
};

}  // namespace quennel
