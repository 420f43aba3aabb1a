#include "access/AuthorizationPanel.h"

#include <optional>

#include "access/Alerts.h"
#include "access/AuthorizedDirectories.h"
#include "access/PanelFolder.h"
#include "access/ReplaceableTexts.h"
#include "platform/Bundle.h"
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
void AuthorizationPanel::askFor(const std::string& dir,
                                const std::function<void()>& whenAuthorized) const {
  const Bundle& bundle = _services.bundle;
  const std::string folder = startFolder(dir);
  rememberPanelFolder(_services.standardDefaults, folder);
  _services.userInterface.activateIgnoringOtherApps();
  _services.userInterface.beginOpenPanel(
      {.title = _services.texts.localizedStringForKey("Quennel"),
       .message =
           bundle.localizedStringForKey("Quennel would like to access your working directory."),
       .prompt = bundle.localizedStringForKey("Authorize"),
       .directory = folder,
       .canChooseFiles = false,
       .canChooseDirectories = true,
       .level = PanelLevel::AboveOthers},
      [this, dir, whenAuthorized](const std::optional<std::string>& chosen) {
        if (chosen) {
          accept(*chosen, dir, whenAuthorized);
        }
      });
}

/// The product's rule is about "/Users". On this desktop home folders lie elsewhere, so that it has
/// no effect: the panel starts in the folder that was asked for.
std::string AuthorizationPanel::startFolder(const std::string& dir) const {
  const std::string home = formatted("/Users/%@/", _services.fileManager.userName());
  return dir.starts_with(home) ? home : dir;
}

void AuthorizationPanel::accept(const std::string& chosen, const std::string& dir,
                                const std::function<void()>& whenAuthorized) const {
  if (!isAtOrBelow(dir, chosen)) {
    const Bundle& bundle = _services.bundle;
    const std::string message =
        bundle.localizedStringForKey("Please select \"%@\" or one of its parent directories.");
    _services.alerts.showAfterPanel(bundle.localizedStringForKey("Unable to create file!"),
                                    formatted(message, dir));
    return;
  }
  _services.securityScope.allowForThisRun(chosen, SecurityScope::Extent::Folder);
  _services.directories.saveAuthorizedURL(chosen);
  whenAuthorized();
}

}  // namespace quennel
