#include <chrono>
#include <memory>

#include "access/PanelFolder.h"
#include "app/AppDelegate.h"
#include "installui/InstallScriptWindowController.h"
#include "platform/Bundle.h"
#include "platform/FileManager.h"
#include "platform/RunLoop.h"
#include "platform/SecurityScope.h"
#include "platform/UserDefaults.h"
#include "platform/UserInterface.h"
#include "platform/UserScripts.h"
#include "platform/Windowing.h"
#include "platform/Workspace.h"
#include "platform/values/Path.h"
#include "shortcuts/UserScript.h"

namespace quennel {

bool AppDelegate::checkAndInstallScripts() {
  Error error;
  const auto folder = _platform.userScripts.applicationScriptsDirectory(&error);
  if (folder && _platform.fileManager.fileExistsAtPath(userScriptPath(folder))) {
    return true;
  }
  if (!folder) {
    showAlert(localizedText("Error creating the scripts directory!"), error.localizedDescription,
              AlertStyle::Critical);
    return false;
  }
  rememberPanelFolder(_platform.standardDefaults, *folder);
  setPanelCount(panelCount() + 1);
  _platform.userInterface.activateIgnoringOtherApps();
  if (!askForScriptsFolder(*folder)) {
    // The count of the panel itself stays raised: the helper no longer quits after a request.
    setPanelCount(panelCount() + 1);
    showAlert(localizedText("You must install the QuennelHelper.sh script in order to use keyboard "
                            "shortcuts!"),
              std::nullopt, AlertStyle::Critical);
    setPanelCount(panelCount() - 1);
    return false;
  }
  const bool isInstalled = installScript(*folder);
  setPanelCount(panelCount() - 1);
  return isInstalled;
}

/// Answers whether the user agreed. The folder that is chosen does not matter beyond the access to
/// it that this grants.
bool AppDelegate::askForScriptsFolder(const std::string& folder) {
  const auto chosen = _platform.userInterface.runModalOpenPanel(
      {.title = localizedText("Select Scripts Directory"),
       .message = localizedText("QuennelHelper would like to access \"~/Library/Application "
                                "Scripts/net.brellow.QuennelHelper\" directory"),
       .prompt = localizedText("Authorize"),
       .directory = folder,
       .canChooseFiles = false,
       .canChooseDirectories = true,
       .showsHiddenFiles = true,
       .level = PanelLevel::AboveOthers});
  if (chosen) {
    _platform.securityScope.allowForThisRun(*chosen, SecurityScope::Extent::Folder);
  }
  return chosen.has_value();
}

bool AppDelegate::installScript(const std::string& folder) {
  const auto source = _platform.mainBundle.pathForResource("QuennelHelper", "sh");
  Error error;
  if (_platform.fileManager.copyItemAtPath(source.value_or(""), userScriptPath(folder), &error)) {
    return true;
  }
  const int answer = _platform.userInterface.runModal(
      {.messageText = localizedText("Unable to install QuennelHelper.sh to the scripts directory!"),
       .informativeText = error.localizedDescription,
       .alertStyle = AlertStyle::Critical,
       .buttons = {localizedText("Install manually"), localizedText("Cancel")}});
  return answer == UserInterface::alertFirstButtonReturn && installScriptManually();
}

bool AppDelegate::installScriptManually() {
  const auto folder = _platform.userScripts.applicationScriptsDirectory();
  if (folder) {
    // So that the user sees it beside the window.
    _platform.workspace.openFile(*folder);
  }
  const auto source = _platform.mainBundle.pathForResource("QuennelHelper", "sh");
  runInstallScriptWindow(source, folder);
  const std::string name = lastPathComponent(source.value_or(""));
  return folder && source &&
         _platform.fileManager.fileExistsAtPath(appendingPathComponent(*folder, name));
}

void AppDelegate::runInstallScriptWindow(const std::optional<std::string>& source,
                                         const std::optional<std::string>& folder) {
  constexpr std::chrono::milliseconds delay{300};
  const auto controller = std::make_shared<InstallScriptWindowController>(
      InstallScriptWindowController::Services{.runLoop = _platform.runLoop,
                                              .fileManager = _platform.fileManager,
                                              .securityScope = _platform.securityScope,
                                              .workspace = _platform.workspace,
                                              .userInterface = _platform.userInterface,
                                              .bundle = _platform.mainBundle});
  _installScriptWindowController = controller;
  controller->setScriptPath(source);
  controller->setDestDir(folder);
  _platform.runLoop.dispatchAfter(delay,
                                  [this] { _platform.userInterface.activateIgnoringOtherApps(); });
  if (Window* const window = controller->window()) {
    _platform.userInterface.windowing()->runModalForWindow(*window);
  }
  // Not one that has taken its place since.
  _platform.runLoop.dispatchAfter(delay, [this, ended = std::weak_ptr(controller)] {
    if (_installScriptWindowController == ended.lock()) {
      _installScriptWindowController.reset();
    }
  });
}

}  // namespace quennel
