#include "creation/FileCreation.h"

#include <cerrno>
#include <chrono>
#include <cstddef>

#include "access/Alerts.h"
#include "access/AuthorizationPanel.h"
#include "creation/AppUtil.h"
#include "platform/Bundle.h"
#include "platform/FileManager.h"
#include "platform/Registration.h"
#include "platform/SecurityScope.h"
#include "platform/Sound.h"
#include "platform/UserDefaults.h"
#include "platform/Workspace.h"
#include "platform/values/Path.h"
#include "platform/values/Text.h"
#include "settings/SharedSettings.h"

namespace quennel {

void FileCreation::createFileAtDir(const std::optional<std::string>& dir,
                                   const FileTemplate& template_) const {
  const std::string folder = dir.value_or("");
  if (refusesForLength(folder)) {
    return;
  }
  const auto stay = _services.securityScope.enterFolder(folder);
  if (_services.util.isWritableFileAtPath(dir)) {
    makeFileInFolder(folder, template_);
    return;
  }
  _services.authorizationPanel.askFor(
      folder, [this, folder, template_] { makeFileAtDir(folder, template_); });
}

void FileCreation::makeFileAtDir(const std::string& dir, const FileTemplate& template_) const {
  const auto stay = _services.securityScope.enterFolder(dir);
  makeFileInFolder(dir, template_);
}

void FileCreation::makeFileInFolder(const std::string& dir, const FileTemplate& template_) const {
  const std::string name = templateFileName(template_);
  if (name.empty()) {
    // Joined to the folder it would name the folder itself, and the free name one beside it.
    reportFailure(_services.bundle.localizedStringForKey("The template has no file name."));
    return;
  }
  const std::string path = _services.util.genNewPathForPath(appendingPathComponent(dir, name));
  Error error;
  if (!_services.fileManager.copyItemAtPath(templateText(template_, "filePath"), path, &error)) {
    reportFailure(error.localizedDescription(_services.bundle));
    return;
  }
  finishNewItem(path, template_);
}

bool FileCreation::refusesForLength(const std::string& dir) const {
  // Of the kernel's calls.
  constexpr std::size_t longestPath = 4095;
  if (dir.size() <= longestPath) {
    return false;
  }
  // The path is too long for an alert, too.
  reportFailure(Error{.code = ENAMETOOLONG}.localizedDescription(_services.bundle));
  return true;
}

void FileCreation::reportFailure(const std::string& reason,
                                 const std::function<void()>& afterwards) const {
  _services.alerts.showAfterPanel(_services.bundle.localizedStringForKey("Error creating file!"),
                                  reason, afterwards);
}

void FileCreation::finishNewItem(const std::string& path, const FileTemplate& template_) const {
  if (templateFlag(template_, "executable")) {
    _services.util.makeItemExecutableAtPath(path);
  } else {
    _services.util.removeExecutableFlagAtPath(path);
  }
  const auto now = std::chrono::system_clock::now();
  _services.fileManager.setAttributes({.creationDate = now, .modificationDate = now}, path);
  runPostCreationActions(path);
}

void FileCreation::runPostCreationActions(const std::string& path) const {
  const UserDefaults& settings = _services.sharedDefaults;
  if (settings.boolForKey(showFileOnCreationKey) && !isDesktopDir(path)) {
    _services.workspace.activateFileViewerSelectingItems({path});
  }
  if (settings.boolForKey(playSoundKey)) {
    _services.sound.playSoundNamed("sound");
  }
  if (settings.boolForKey(openFileOnCreationKey)) {
    _services.workspace.openFile(path);
  }
}

/// The product's rule is about "/Users". On this desktop home folders lie elsewhere, so that it has
/// no effect: a file on the desktop is revealed like any other.
bool FileCreation::isDesktopDir(const std::string& path) const {
  const std::string desktop = formatted("/Users/%@/Desktop", _services.fileManager.userName());
  return path == desktop || deletingLastPathComponent(path) == desktop;
}

}  // namespace quennel
