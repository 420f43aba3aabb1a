#include "finderpath/FileURI.h"

#include "platform/values/URL.h"

namespace quennel {

std::optional<std::string> pathOfFileURI(const std::string& uri) {
  const auto url = uri.starts_with("file:") ? URL::create(uri) : std::nullopt;
  if (!url || !url->path().starts_with('/')) {
    return std::nullopt;
  }
  return url->path();
}

}  // namespace quennel
