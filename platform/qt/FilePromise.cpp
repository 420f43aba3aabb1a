#include "platform/qt/FilePromise.h"

#include <utility>

#include "platform/qt/FileIdentity.h"
#include "platform/values/Path.h"

namespace quennel {

FilePromise::FilePromise(std::string path, Writer writer)
    : _path(std::move(path)), _writer(std::move(writer)) {}

std::string FilePromise::name() const { return lastPathComponent(_path); }

bool FilePromise::keep(const std::string& folder) const {
  const std::string target = appendingPathComponent(folder, name());
  const auto before = identityOfFile(target);
  _writer(folder);
  const auto after = identityOfFile(target);
  return after && after != before;
}

}  // namespace quennel
