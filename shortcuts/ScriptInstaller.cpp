#include "shortcuts/ScriptInstaller.h"

#include <chrono>

#include "access/Alerts.h"
#include "access/PanelFolder.h"
#include "creation/PanelCount.h"
#include "installui/InstallScriptWindowController.h"
#include "platform/Bundle.h"
#include "platform/FileManager.h"
#include "platform/RunLoop.h"
#include "platform/SecurityScope.h"
#include "platform/UserInterface.h"
#include "platform/UserScripts.h"
#include "platform/Windowing.h"
#include "platform/Workspace.h"
#include "platform/values/Path.h"
#include "shortcuts/UserScript.h"

namespace quennel {

ScriptInstaller::ScriptInstaller(const Services& services) : _services(services) {}

ScriptInstaller::~ScriptInstaller() = default;

bool ScriptInstaller::checkAndInstallScripts() {
  Error error;
  const auto folder = _services.userScripts.applicationScriptsDirectory(&error);
  if (folder && _services.fileManager.fileExistsAtPath(userScriptPath(folder))) {
    return true;
  }
  if (!folder) {
    _services.alerts.showAlert(localizedText("Error creating the scripts directory!"),
                               error.localizedDescription(_services.bundle), AlertStyle::Critical);
    return false;
  }
  _isAtWork = true;
  const bool isInstalled = askAndInstallScript(*folder);
  _isAtWork = false;
  return isInstalled;
}

void ScriptInstaller::bringToFront() { _services.userInterface.activateIgnoringOtherApps(); }

bool ScriptInstaller::askAndInstallScript(const std::string& folder) {
  rememberPanelFolder(_services.standardDefaults, folder);
  _services.panelCount.raise();
  _services.userInterface.activateIgnoringOtherApps();
  if (!askForScriptsFolder(folder)) {
    // The count of the panel itself stays raised: the helper no longer quits after a request.
    _services.panelCount.raise();
    _services.alerts.showAlert(
        localizedText("You must install the QuennelHelper.sh script in order to use "
                      "keyboard shortcuts!"),
        std::nullopt, AlertStyle::Critical);
    _services.panelCount.lower();
    return false;
  }
  const bool isInstalled = installScript(folder);
  _services.panelCount.lower();
  return isInstalled;
}

/// Answers whether the user agreed. The folder that is chosen does not matter beyond the access to
/// it that this grants.
bool ScriptInstaller::askForScriptsFolder(const std::string& folder) {
  const auto chosen = _services.userInterface.runModalOpenPanel(
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
    _services.securityScope.allowForThisRun(*chosen, SecurityScope::Extent::Folder);
  }
  return chosen.has_value();
}

bool ScriptInstaller::installScript(const std::string& folder) {
  const auto source = _services.bundle.pathForResource("QuennelHelper", "sh");
  Error error;
  if (_services.fileManager.copyItemAtPath(source.value_or(""), userScriptPath(folder), &error)) {
    return true;
  }
  const int answer = _services.userInterface.runModal(
      {.messageText = localizedText("Unable to install QuennelHelper.sh to the scripts directory!"),
       .informativeText = error.localizedDescription(_services.bundle),
       .alertStyle = AlertStyle::Critical,
       .buttons = {localizedText("Install manually"), localizedText("Cancel")}});
  return answer == UserInterface::alertFirstButtonReturn && installScriptManually();
}

bool ScriptInstaller::installScriptManually() {
  const auto folder = _services.userScripts.applicationScriptsDirectory();
  if (folder) {
    // So that the user sees it beside the window.
    _services.workspace.openFile(*folder);
  }
  const auto source = _services.bundle.pathForResource("QuennelHelper", "sh");
  runInstallScriptWindow(source, folder);
  const std::string name = lastPathComponent(source.value_or(""));
  return folder && source &&
         _services.fileManager.fileExistsAtPath(appendingPathComponent(*folder, name));
}

void ScriptInstaller::runInstallScriptWindow(const std::optional<std::string>& source,
                                             const std::optional<std::string>& folder) {
  constexpr std::chrono::milliseconds delay{300};
  UserInterface& userInterface = _services.userInterface;
  const auto controller = std::make_shared<InstallScriptWindowController>(
      InstallScriptWindowController::Services{.runLoop = _services.runLoop,
                                              .fileManager = _services.fileManager,
                                              .securityScope = _services.securityScope,
                                              .workspace = _services.workspace,
                                              .userInterface = userInterface,
                                              .bundle = _services.bundle});
  _installScriptWindowController = controller;
  controller->setScriptPath(source);
  controller->setDestDir(folder);
  _services.runLoop.dispatchAfter(delay,
                                  [&userInterface] { userInterface.activateIgnoringOtherApps(); });
  if (Window* const window = controller->window()) {
    userInterface.windowing()->runModalForWindow(*window);
  }
  // Not one that has taken its place since.
  _services.runLoop.dispatchAfter(delay, [this, ended = std::weak_ptr(controller)] {
    if (_installScriptWindowController == ended.lock()) {
      _installScriptWindowController.reset();
    }
  });
}

std::string ScriptInstaller::localizedText(const std::string& key) const {
  return _services.bundle.localizedStringForKey(key);
}

}  // namespace quennel
