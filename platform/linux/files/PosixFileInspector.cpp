#include "platform/linux/files/PosixFileInspector.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "platform/values/Path.h"

namespace quennel {
namespace {

void fill(Error* error, int code, const std::string& path) {
  if (error) {
    *error = {code, Error::Kind::Reading, path};
  }
}

FileFacts::Kind kindOf(mode_t mode) {
  if (S_ISDIR(mode)) {
    return FileFacts::Kind::Folder;
  }
  return S_ISREG(mode) ? FileFacts::Kind::File : FileFacts::Kind::Special;
}

bool hasParentComponent(const std::string& path) {
  return path == ".." || path.starts_with("../") || path.ends_with("/..") ||
         path.find("/../") != std::string::npos;
}

}  // namespace

std::optional<FileFacts> PosixFileInspector::factsOf(const std::string& path, Error* error) const {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) {
    fill(error, errno, path);
    return std::nullopt;
  }
  FileFacts facts;
  facts.kind = kindOf(status.st_mode);
  facts.isExecutable = (status.st_mode & 0111U) != 0;
  const int wanted = facts.kind == FileFacts::Kind::Folder ? R_OK | X_OK : R_OK;
  if (access(path.c_str(), wanted) != 0) {
    facts.obstacle = Error{errno, Error::Kind::Reading, path};
  }
  return facts;
}

std::optional<std::string> PosixFileInspector::absolutePath(const std::string& path,
                                                            Error* error) const {
  std::error_code failure;
  // An empty path names nothing, although standard functions take it for the current folder.
  const bool exists = !path.empty() && std::filesystem::exists(path, failure);
  if (!exists) {
    fill(error, failure ? failure.value() : ENOENT, path);
    return std::nullopt;
  }
  // Only where a ".." asks for it are links looked through: the user's own name of a place is the
  // one to keep.
  const auto absolute = hasParentComponent(path) ? std::filesystem::canonical(path, failure)
                                                 : std::filesystem::absolute(path, failure);
  if (failure) {
    fill(error, failure.value(), path);
    return std::nullopt;
  }
  return standardizingPath(absolute.native());
}

}  // namespace quennel
