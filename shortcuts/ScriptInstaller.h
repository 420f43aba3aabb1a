#pragma once

#include <memory>
#include <optional>
#include <string>

namespace quennel {

class Alerts;
class Bundle;
class FileManager;
class InstallScriptWindowController;
class PanelCount;
class RunLoop;
class SecurityScope;
class UserDefaults;
class UserInterface;
class UserScripts;
class Workspace;

/// Puts the user script into its folder, or helps the user to. Main thread only; outlives the work
/// that it puts on the main queue.
class ScriptInstaller {
 public:
  struct Services {
    RunLoop& runLoop;
    FileManager& fileManager;
    SecurityScope& securityScope;
    Workspace& workspace;
    UserInterface& userInterface;
    UserScripts& userScripts;
    UserDefaults& standardDefaults;
    const Bundle& bundle;
    const Alerts& alerts;
    PanelCount& panelCount;
  };
  explicit ScriptInstaller(const Services& services);
  ScriptInstaller(const ScriptInstaller&) = delete;
  ScriptInstaller& operator=(const ScriptInstaller&) = delete;
  ~ScriptInstaller();

  /// Whether the user script is installed; one that is not is installed first if the user agrees.
  bool checkAndInstallScripts();
  /// Whether the user is being asked about the installation, or helped with it, right now.
  bool isAtWork() const { return _isAtWork; }
  /// Brings what is on the screen for that before the windows of other programs.
  void bringToFront();
  /// Lets the user drag it into the scripts folder; answers whether it is there then.
  bool installScriptManually();
  /// The controller of the window for this, while the window is there.
  const std::shared_ptr<InstallScriptWindowController>& installScriptWindowController() const {
    return _installScriptWindowController;
  }

 private:
  std::string localizedText(const std::string& key) const;
  bool askAndInstallScript(const std::string& folder);
  bool askForScriptsFolder(const std::string& folder);
  bool installScript(const std::string& folder);
  void runInstallScriptWindow(const std::optional<std::string>& source,
                              const std::optional<std::string>& folder);

  Services _services;
  bool _isAtWork = false;
  std::shared_ptr<InstallScriptWindowController> _installScriptWindowController;
};

}  // namespace quennel
