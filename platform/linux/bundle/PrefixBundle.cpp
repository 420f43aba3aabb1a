#include "platform/linux/bundle/PrefixBundle.h"

#include <limits.h>
#include <unistd.h>

#include <utility>

#include "platform/linux/locale/UserLocale.h"
#include "platform/linux/settings/PropertyListFile.h"
#include "platform/values/Path.h"

namespace quennel {
namespace {

std::string runningExecutable() {
  char path[PATH_MAX];
  const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
  return length > 0 ? std::string(path, static_cast<std::size_t>(length)) : "/";
}

}  // namespace

PrefixBundle::PrefixBundle() : PrefixBundle(runningExecutable()) {}

PrefixBundle::PrefixBundle(std::string executablePath)
    : _executablePath(std::move(executablePath)),
      _prefix(deletingLastPathComponent(deletingLastPathComponent(_executablePath))) {}

std::optional<std::string> PrefixBundle::pathForResource(const std::string& name,
                                                         const std::string& type) const {
  if (name.empty()) {
    return std::nullopt;
  }
  std::string path =
      appendingPathComponent(_prefix, "share/quennelhelper/" + appendingPathExtension(name, type));
  return access(path.c_str(), F_OK) == 0 ? std::optional(std::move(path)) : std::nullopt;
}

std::optional<PropertyList::Dictionary> PrefixBundle::dictionaryWithContentsOfFile(
    const std::string& path) const {
  return quennel::dictionaryWithContentsOfFile(path);
}

std::string PrefixBundle::localizedStringForKey(const std::string& key) const {
  return UserLocale::translation(key, "quennelhelper",
                                 appendingPathComponent(_prefix, "share/locale"));
}

std::string PrefixBundle::userInterfaceModulePath() const {
  return appendingPathComponent(_prefix, "lib/quennelhelper/libquennelhelper-ui.so");
}

std::string PrefixBundle::hotKeyModulePath() const {
  return appendingPathComponent(_prefix, "lib/quennelhelper/libquennelhelper-keys.so");
}

}  // namespace quennel
