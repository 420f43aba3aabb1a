#include "app/AppDelegate.h"
#include "platform/FileManager.h"
#include "platform/SecurityScope.h"
#include "platform/UserInterface.h"
#include "platform/values/Text.h"

namespace quennel {

namespace {

bool isAtOrBelow(const std::string& dir, const std::string& folder) {
  return dir == folder || dir.starts_with(folder + "/");
}

}  // namespace

// The panel is not counted: the quit check of a request may end the helper while it is open.
void AppDelegate::askForAuthorization(const std::string& dir, const FileTemplate& template_) {
  const std::string home = formatted("/Users/%@/", _platform.fileManager.userName());
  const std::string startFolder = dir.starts_with(home) ? home : dir;
  rememberPanelFolder(startFolder);
  _platform.userInterface.activateIgnoringOtherApps();
  _platform.userInterface.beginOpenPanel(
      {.title = localizedStringForKey("Quennel"),
       .message = localizedText("Quennel would like to access your working directory."),
       .prompt = localizedText("Authorize"),
       .directory = startFolder,
       .canChooseFiles = false,
       .canChooseDirectories = true,
       .level = PanelLevel::AboveOthers},
      [this, dir, template_](const std::optional<std::string>& chosen) {
        if (chosen) {
          acceptAuthorization(*chosen, dir, template_);
        }
      });
}

void AppDelegate::acceptAuthorization(const std::string& chosen, const std::string& dir,
                                      const FileTemplate& template_) {
  if (!isAtOrBelow(dir, chosen)) {
    showAlertAfterPanel(
        "Unable to create file!",
        formatted(localizedText("Please select \"%@\" or one of its parent directories."), dir));
    return;
  }
  _platform.securityScope.allowForThisRun(chosen, SecurityScope::Extent::Folder);
  saveAuthorizedURL(chosen);
  makeFileAtDir(dir, template_);
}

}  // namespace quennel
