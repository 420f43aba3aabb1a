#include "ctl/FilePath.h"

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "ctl/CommandError.h"
#include "platform/linux/locale/UserLocale.h"
#include "platform/values/Path.h"
#include "platform/values/PropertyList.h"

namespace quennel {
namespace {

bool hasParentComponent(const std::string& path) {
  return path == ".." || path.starts_with("../") || path.ends_with("/..") ||
         path.find("/../") != std::string::npos;
}

}  // namespace

std::string existingPath(const std::string& path) {
  std::error_code error;
  // An empty path names nothing, although standard functions take it for the current folder.
  const bool exists = !path.empty() && std::filesystem::exists(path, error);
  if (!exists) {
    throw CommandFailure(shown(path) + ": " +
                         UserLocale::errorDescription(error ? error.value() : ENOENT));
  }
  // Only where a ".." asks for it are links looked through: the user's own name of a place is the
  // one to keep.
  const auto absolute = hasParentComponent(path) ? std::filesystem::canonical(path, error)
                                                 : std::filesystem::absolute(path, error);
  if (error) {
    throw CommandFailure(shown(path) + ": " + UserLocale::errorDescription(error.value()));
  }
  return standardizingPath(absolute.native());
}

std::string existingFolder(const std::string& path) {
  std::string folder = existingPath(path);
  std::error_code error;
  if (!std::filesystem::is_directory(folder, error)) {
    throw CommandFailure(shown(folder) + " is not a folder");
  }
  return folder;
}

std::string shown(const std::string& path) { return PropertyList(path).description(); }

}  // namespace quennel
