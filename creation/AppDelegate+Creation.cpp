#include "app/AppDelegate.h"
#include "platform/Bundle.h"
#include "platform/FileManager.h"
#include "platform/Sound.h"
#include "platform/UserDefaults.h"
#include "platform/Workspace.h"
#include "platform/values/Path.h"
#include "platform/values/Text.h"
#include "settings/SharedSettings.h"

namespace quennel {

void AppDelegate::createFileAtDir(const std::optional<std::string>& dir,
                                  const FileTemplate& template_) {
  if (_util.isWritableFileAtPath(dir)) {
    makeFileAtDir(*dir, template_);
  } else {
    const std::string folder = dir.value_or("");
    _authorizationPanel.askFor(folder,
                               [this, folder, template_] { makeFileAtDir(folder, template_); });
  }
}

void AppDelegate::makeFileAtDir(const std::string& dir, const FileTemplate& template_) {
  const std::string name = templateFileName(template_);
  if (name.empty()) {
    // Joined to the folder it would name the folder itself, and the free name one beside it.
    _alerts.showAfterPanel(localizedText("Error creating file!"),
                           localizedText("The template has no file name."));
    return;
  }
  const std::string path = _util.genNewPathForPath(appendingPathComponent(dir, name));
  Error error;
  if (!_platform.fileManager.copyItemAtPath(templateText(template_, "filePath"), path, &error)) {
    _alerts.showAfterPanel(localizedText("Error creating file!"), error.localizedDescription);
    return;
  }
  finishNewItem(path, template_);
}

void AppDelegate::finishNewItem(const std::string& path, const FileTemplate& template_) {
  if (templateFlag(template_, "executable")) {
    _util.makeItemExecutableAtPath(path);
  } else {
    _util.removeExecutableFlagAtPath(path);
  }
  const auto now = std::chrono::system_clock::now();
  _platform.fileManager.setAttributes({.creationDate = now, .modificationDate = now}, path);
  runPostCreationActions(path);
}

void AppDelegate::runPostCreationActions(const std::string& path) {
  if (sharedDefaults().boolForKey(showFileOnCreationKey) && !isDesktopDir(path)) {
    _platform.workspace.activateFileViewerSelectingItems({path});
  }
  if (sharedDefaults().boolForKey(playSoundKey)) {
    _platform.sound.playSoundNamed("sound");
  }
  if (sharedDefaults().boolForKey(openFileOnCreationKey)) {
    _platform.workspace.openFile(path);
  }
}

bool AppDelegate::isDesktopDir(const std::string& path) const {
  const std::string desktop = formatted("/Users/%@/Desktop", _platform.fileManager.userName());
  return path == desktop || deletingLastPathComponent(path) == desktop;
}

}  // namespace quennel
