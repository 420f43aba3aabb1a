#pragma once

#include "platform/FileInspector.h"

namespace quennel {

class PosixFileInspector final : public FileInspector {
 public:
  std::optional<FileFacts> factsOf(const std::string& path, Error* error = nullptr) const override;
  std::optional<std::string> absolutePath(const std::string& path,
                                          Error* error = nullptr) const override;
};

}  // namespace quennel
