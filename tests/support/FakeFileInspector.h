#pragma once

#include <cerrno>
#include <map>
#include <string>

#include "platform/FileInspector.h"
#include "platform/values/Path.h"

namespace quennel::test {

/// Items that the test writes down, seen from the folder "/here".
class FakeFileInspector : public FileInspector {
 public:
  std::map<std::string, FileFacts> items;

  std::optional<FileFacts> factsOf(const std::string& path, Error* error = nullptr) const override {
    const auto item = items.find(path);
    if (item == items.end()) {
      if (error) {
        *error = {ENOENT, Error::Kind::Reading, path};
      }
      return std::nullopt;
    }
    return item->second;
  }

  std::optional<std::string> absolutePath(const std::string& path,
                                          Error* error = nullptr) const override {
    const std::string absolute =
        path.starts_with('/') ? path : appendingPathComponent("/here", path);
    return factsOf(absolute, error) ? std::optional(absolute) : std::nullopt;
  }
};

}  // namespace quennel::test
