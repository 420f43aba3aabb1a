#include "platform/linux/scope/ConfinedFileManager.h"

#include <fcntl.h>

#include <cerrno>

#include "platform/linux/base/FileDescriptor.h"
#include "platform/values/Path.h"

namespace quennel {

namespace {

/// An error speaks of the path that the caller knows, not of the one that the scope put in its
/// place.
void showPath(const std::string& path, const std::string& inPlaceOf, Error* error) {
  if (error && error->item.starts_with(inPlaceOf)) {
    error->item.replace(0, inPlaceOf.size(), path);
  }
}

/// The work, with its error put in the caller's terms.
SecurityScope::Work reporting(const std::string& path, Error* error, SecurityScope::Work work) {
  return [&path, error, work = std::move(work)](const std::string& place) {
    const bool done = work(place);
    if (!done) {
      showPath(path, place, error);
    }
    return done;
  };
}

bool isRefusal(int code) { return code == EACCES || code == EPERM || code == EROFS; }

}  // namespace

bool ConfinedFileManager::copyItemAtPath(const std::string& path, const std::string& toPath,
                                         Error* error) {
  return _scope.performConfined(toPath,
                                reporting(toPath, error,
                                          [&](const std::string& place) {
                                            return _files.copyItemAtPath(path, place, error);
                                          }),
                                error);
}

FileManager::Replacement ConfinedFileManager::replaceItemAtPath(const std::string& path,
                                                                const std::string& withCopyOf,
                                                                Error* error) {
  Replacement replacement = Replacement::NotSetAside;
  const auto work = [&](const std::string& place) {
    replacement = _files.replaceItemAtPath(place, withCopyOf, error);
    return replacement == Replacement::Done;
  };
  _scope.performConfined(path, reporting(path, error, work), error);
  return replacement;
}

bool ConfinedFileManager::removeItemAtPath(const std::string& path, Error* error) {
  return _scope.performConfined(
      path,
      reporting(path, error,
                [&](const std::string& place) { return _files.removeItemAtPath(place, error); }),
      error);
}

bool ConfinedFileManager::createDirectoryAtPath(const std::string& path,
                                                bool withIntermediateDirectories, Error* error) {
  if (withIntermediateDirectories) {
    if (_files.itemKindAtPath(path) == ItemKind::Directory) {
      return true;
    }
    // One level at a time: each has to be there before the scope can tell where the next one is.
    const std::string parent = deletingLastPathComponent(path);
    const bool missing = parent.size() < path.size() && !_files.fileExistsAtPath(parent);
    if (missing && !createDirectoryAtPath(parent, true, error)) {
      return false;
    }
  }
  return _scope.performConfined(path,
                                reporting(path, error,
                                          [&](const std::string& place) {
                                            return _files.createDirectoryAtPath(
                                                place, withIntermediateDirectories, error);
                                          }),
                                error);
}

bool ConfinedFileManager::writeContents(std::string_view contents, const std::string& toPath,
                                        Error* error) {
  return _scope.performConfined(toPath,
                                reporting(toPath, error,
                                          [&](const std::string& place) {
                                            return _files.writeContents(contents, place, error);
                                          }),
                                error);
}

bool ConfinedFileManager::setAttributes(const FileAttributes& attributes,
                                        const std::string& ofItemAtPath, Error* error) {
  return _scope.performOnItem(ofItemAtPath,
                              reporting(ofItemAtPath, error,
                                        [&](const std::string& place) {
                                          return _files.setAttributes(attributes, place, error);
                                        }),
                              error);
}

bool ConfinedFileManager::isWritableFileAtPath(const std::string& path) const {
  const auto probe = [&](const std::string& place) {
    // Permission bits alone do not tell what another sandbox around this program refuses. A file
    // without a name does, and leaves no trace in the folder.
    const FileDescriptor file(open(place.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, S_IRUSR));
    return file || (!isRefusal(errno) && _files.isWritableFileAtPath(place));
  };
  return _scope.performOnItem(path, probe, nullptr);
}

}  // namespace quennel
