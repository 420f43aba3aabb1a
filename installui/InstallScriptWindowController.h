#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "installui/DragDropImageView.h"
#include "installui/InstallScriptCmdViewController.h"
#include "platform/InstallScriptWindow.h"
#include "platform/Popover.h"
#include "platform/UserInterface.h"

namespace quennel {

class Bundle;
class FileManager;
class RunLoop;
class SecurityScope;
class Windowing;
class Workspace;

/// The controller of the window that helps the user to install the user script: the script is an
/// icon that is dragged into the scripts folder, which closes the window. Main thread only. Lives
/// in a shared pointer, because an alert that is up keeps it.
class InstallScriptWindowController
    : public InstallScriptWindow::Owner,
      public DragDropImageViewDelegate,
      public std::enable_shared_from_this<InstallScriptWindowController> {
 public:
  struct Services {
    RunLoop& runLoop;
    FileManager& fileManager;
    SecurityScope& securityScope;
    Workspace& workspace;
    UserInterface& userInterface;
    const Bundle& bundle;
  };
  explicit InstallScriptWindowController(const Services& services);
  ~InstallScriptWindowController() override;

  /// The file to install, and the folder that it belongs into; to be set before the window is
  /// loaded.
  void setScriptPath(std::optional<std::string> path) { _scriptPath = std::move(path); }
  const std::optional<std::string>& scriptPath() const { return _scriptPath; }
  void setDestDir(std::optional<std::string> folder) { _destDir = std::move(folder); }
  const std::optional<std::string>& destDir() const { return _destDir; }

  /// The window, loaded from its interface file on first use; null with no display.
  Window* window();
  /// Null before the window is loaded.
  DragDropImageView* imageView() const { return _imageView.get(); }
  /// Null before the first click on the help button.
  Popover* myPopover() const { return _myPopover.get(); }
  InstallScriptCmdViewController* installScriptCmdViewController() const {
    return _installScriptCmdViewController.get();
  }

  void windowDidLoad();

  /// Shows the command that installs the script, beside the button.
  void didClickHelp(const View* sender) override;
  void copyPath(const View* sender) override;
  void openDestination(const View* sender) override;
  void windowWillClose() override;

  /// Closes the window when the file was written to the right folder.
  void dropComplete(const std::optional<std::string>& path) override;
  void dropFail(const std::optional<std::string>& path) override;

  /// Shows a modal alert; returns when the user has dismissed it.
  void showAlert(const std::optional<std::string>& title, const std::optional<std::string>& message,
                 AlertStyle style) const;

 private:
  void makePopover();
  std::string localizedText(const std::string& key) const;
  void reportFailedWriting(const std::string& path) const;
  Services _services;
  Windowing* _windowing;
  std::optional<std::string> _scriptPath;
  std::optional<std::string> _destDir;
  // In the order in which they need each other.
  std::unique_ptr<InstallScriptWindow> _window;
  std::unique_ptr<DragDropImageView> _imageView;
  std::unique_ptr<InstallScriptCmdView> _cmdView;
  std::unique_ptr<InstallScriptCmdViewController> _installScriptCmdViewController;
  std::unique_ptr<Popover> _myPopover;
};

}  // namespace quennel
