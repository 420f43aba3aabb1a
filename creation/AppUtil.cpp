#include "creation/AppUtil.h"

#include <cstdint>
#include <vector>

#include "access/Alerts.h"
#include "creation/FreeName.h"
#include "platform/DistributedNotificationCenter.h"
#include "platform/SecurityScope.h"
#include "platform/values/Path.h"
#include "platform/values/Text.h"
#include "settings/SharedSettings.h"

namespace quennel {

namespace {

constexpr std::uint16_t executeBits = 0111;

}  // namespace

std::string AppUtil::genNewPathForPath(const std::string& path) const {
  return files().fileExistsAtPath(path) ? FreeName(files(), path).find() : path;
}

bool AppUtil::copyItemAtPath(const std::string& path, const std::string& toPath,
                             Error* error) const {
  if (standardizingPath(path) == standardizingPath(toPath)) {
    return false;
  }
  if (files().fileExistsAtPath(toPath) && !files().removeItemAtPath(toPath, error)) {
    return false;
  }
  const auto kind = files().itemKindAtPath(path);
  if (!kind) {
    return true;
  }
  return *kind == FileManager::ItemKind::Directory ? copyFolder(path, toPath, error)
                                                   : copyFile(path, toPath);
}

bool AppUtil::copyFile(const std::string& path, const std::string& toPath) const {
  const auto contents = files().contentsAtPath(path);
  if (!contents || !files().writeContents(*contents, toPath)) {
    return false;
  }
  copyFilePermissionsAtPath(path, toPath);
  return true;
}

bool AppUtil::copyFolder(const std::string& path, const std::string& toPath, Error* error) const {
  files().createDirectoryAtPath(toPath, true, error);
  // Listed before anything is copied: a copy inside the source must not go on with itself.
  std::vector<std::string> items;
  files().enumerateItemsAtPath(path, [&](const std::string& item) {
    items.push_back(item);
    return true;
  });
  for (const std::string& item : items) {
    const std::string source = appendingPathComponent(path, item);
    const std::string copy = appendingPathComponent(toPath, item);
    const bool isCopied =
        isDir(source) ? files().createDirectoryAtPath(copy, true, error) : copyFile(source, copy);
    if (!isCopied) {
      return false;
    }
    copyFilePermissionsAtPath(source, copy);
  }
  return true;
}

bool AppUtil::copyFilePermissionsAtPath(const std::string& path, const std::string& toPath) const {
  const auto attributes = files().attributesOfItemAtPath(path);
  return attributes &&
         files().setAttributes({.posixPermissions = attributes->posixPermissions}, toPath);
}

bool AppUtil::makeItemExecutableAtPath(const std::string& path) const {
  return makeItemExecutable(true, path);
}

bool AppUtil::removeExecutableFlagAtPath(const std::string& path) const {
  return makeItemExecutable(false, path);
}

bool AppUtil::makeItemExecutable(bool flag, const std::string& atPath) const {
  if (files().itemKindAtPath(atPath) != FileManager::ItemKind::File) {
    return false;
  }
  const auto attributes = files().attributesOfItemAtPath(atPath);
  if (!attributes || !attributes->posixPermissions) {
    return false;
  }
  const auto otherBits = static_cast<std::uint16_t>(*attributes->posixPermissions & ~executeBits);
  const auto permissions = static_cast<std::uint16_t>(otherBits | (flag ? executeBits : 0));
  return files().setAttributes({.posixPermissions = permissions}, atPath);
}

bool AppUtil::isWritableFileAtPath(const std::optional<std::string>& path) const {
  if (!path) {
    return false;
  }
  std::string tested = *path;
  auto kind = files().itemKindAtPath(tested);
  while (!kind && tested.size() >= 2) {
    tested = deletingLastPathComponent(tested);
    kind = files().itemKindAtPath(tested);
  }
  if (kind == FileManager::ItemKind::Directory && !tested.ends_with('/')) {
    tested += '/';
  }
  if (files().isWritableFileAtPath(tested)) {
    return true;
  }
  const auto unescaped = removingPercentEscapes(tested);
  return unescaped && files().isWritableFileAtPath(*unescaped);
}

std::optional<PropertyList::Data> AppUtil::bookmarkFromURL(const std::string& url) const {
  return _services.securityScope.bookmarkDataForPath(url);
}

std::optional<std::string> AppUtil::urlFromBookmark(const PropertyList::Data& bookmark) const {
  return _services.securityScope.pathByResolvingBookmarkData(bookmark);
}

void AppUtil::updateDateForPath(FileAttributes::Date date, const std::string& path) const {
  const auto kind = files().itemKindAtPath(path);
  if (!kind) {
    return;
  }
  updateDateForFile(date, path);
  if (*kind == FileManager::ItemKind::Directory) {
    files().enumerateItemsAtPath(path, [&](const std::string& item) {
      updateDateForFile(date, appendingPathComponent(path, item));
      return true;
    });
  }
}

void AppUtil::updateDateForFile(FileAttributes::Date date, const std::string& path) const {
  FileAttributes attributes = files().attributesOfItemAtPath(path).value_or(FileAttributes());
  attributes.creationDate = date;
  attributes.modificationDate = date;
  files().setAttributes(attributes, path);
}

void AppUtil::postRefreshNotification(const std::string& object) const {
  _services.notifications.postNotification({sharedSuiteName, object, {}}, true);
}

std::optional<std::string> AppUtil::humanReadableFileTypeForFileExtension(
    const std::string& extension) const {
  return _services.userInterface.localizedDescriptionOfFileExtension(extension);
}

bool AppUtil::isDir(const std::string& path) const {
  return files().itemKindAtPath(path) == FileManager::ItemKind::Directory;
}

void AppUtil::showAlert(const std::optional<std::string>& title,
                        const std::optional<std::string>& message, AlertStyle style) const {
  quennel::showAlert(_services.userInterface, title, message, style);
}

void AppUtil::showAlert(const std::optional<std::string>& title,
                        const std::optional<std::string>& message) const {
  showAlert(title, message, AlertStyle::Informational);
}

}  // namespace quennel
