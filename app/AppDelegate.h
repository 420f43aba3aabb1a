#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "app/Rooms.h"
#include "platform/Registration.h"
#include "platform/UserInterface.h"
#include "settings/FileTemplate.h"
#include "watch/VDKQueueDelegate.h"

namespace quennel {

class InstallScriptWindowController;
struct Notification;
struct URLEvent;

/// The application object: the hub that every flow is an operation of, or is called by. It is the
/// helper's lifecycle, its quit checks and its requests; the rest is done by the rooms. Main thread
/// only; it and the rooms outlive the work that they put on the main queue, because the queue drops
/// its work when the loop ends.
class AppDelegate : public VDKQueueDelegate {
 public:
  /// Opens the settings, starts listening to the main application and to volumes that come and go,
  /// and starts access to the directories that the user has granted.
  explicit AppDelegate(const Platform& platform);
  AppDelegate(const AppDelegate&) = delete;
  AppDelegate& operator=(const AppDelegate&) = delete;
  ~AppDelegate() override;

  // Lifecycle

  /// Takes over the URL events; before launching finishes, so that the URL that launched the helper
  /// is not lost.
  void applicationWillFinishLaunching();
  /// Binds the shortcuts, arms the launch quit check and starts to watch the helper's own
  /// executable.
  void applicationDidFinishLaunching();
  /// Called once, when the run loop is told to terminate.
  void applicationWillTerminate();

  /// A command of the main application: the object of `notification`.
  void userDefaultsDidChange(const Notification& notification);
  /// Arms the launch quit check, unless the user wants the helper to stay in the background.
  void checkAndTerminate();
  /// Something happened to the executable, or to a folder that it is in: the helper terminates.
  void receivedNotification(VDKQueue& queue, std::string_view notification,
                            std::string_view path) override;

  UserDefaults& sharedDefaults() const { return _platform.sharedDefaults; }
  /// The template at a position of the list, disabled ones counted and found too.
  std::optional<FileTemplate> findTemplateByIndex(std::int64_t index) const;
  /// A text that the main application may replace through the setting `localizedStrings`.
  std::string localizedStringForKey(const std::string& key) const {
    return _rooms.texts.localizedStringForKey(key);
  }
  void showAlert(const std::optional<std::string>& title, const std::optional<std::string>& message,
                 AlertStyle style) const {
    _rooms.alerts.showAlert(title, message, style);
  }

  /// Whether a URL has ever arrived; it disables the launch quit check for good.
  bool shouldHandleURL() const { return _shouldHandleURL; }
  void setShouldHandleURL(bool value) { _shouldHandleURL = value; }
  /// The number of panels and alerts that keep the helper from quitting after a request.
  std::int64_t panelCount() const { return _rooms.panelCount.value(); }
  void setPanelCount(std::int64_t count) { _rooms.panelCount.set(count); }

  // Requests

  /// Makes the file that the URL asks for: its path is the folder, its query the template's index.
  void handleURLEvent(const URLEvent& event);

  // Granted directories: AuthorizedDirectories

  void startAccessingURLs() { _rooms.directories.startAccessingURLs(); }
  void stopAccessingURLs() { _rooms.directories.stopAccessingURLs(); }
  void restartAccessingURLs() { _rooms.directories.restartAccessingURLs(); }
  void workspaceDidMount() { restartAccessingURLs(); }
  void workspaceDidUnmount() { restartAccessingURLs(); }
  void saveAuthorizedURL(const std::string& url) { _rooms.directories.saveAuthorizedURL(url); }
  const std::set<std::string>& openedURLs() const { return _rooms.directories.openedURLs(); }

  // New files: FileCreation and NewFilePanel

  void createFileAtDir(const std::optional<std::string>& dir, const FileTemplate& template_) {
    _rooms.creation.createFileAtDir(dir, template_);
  }
  void makeFileAtDir(const std::string& dir, const FileTemplate& template_) {
    _rooms.creation.makeFileAtDir(dir, template_);
  }
  bool isDesktopDir(const std::string& path) const { return _rooms.creation.isDesktopDir(path); }
  void showNewFilePanel(const std::optional<std::string>& dir, const FileTemplate& template_) {
    _rooms.newFilePanel.showNewFilePanel(dir, template_);
  }

  // Shortcuts: Shortcuts, FolderQuery and ScriptInstaller

  void bindHotKeys() { _rooms.shortcuts.bindHotKeys(); }
  const std::optional<PropertyList::Array>& templates() const {
    return _rooms.shortcuts.templates();
  }
  bool resolveInstanceMethod(const std::string& name) {
    return _rooms.shortcuts.resolveInstanceMethod(name);
  }
  void getFinderPathWithTemplate(const FileTemplate& template_,
                                 FolderQuery::Handler completionHandler) const {
    _rooms.folderQuery.getFinderPathWithTemplate(template_, std::move(completionHandler));
  }
  bool checkAndInstallScripts() { return _rooms.installer.checkAndInstallScripts(); }
  bool installScriptManually() { return _rooms.installer.installScriptManually(); }
  const std::shared_ptr<InstallScriptWindowController>& installScriptWindowController() const {
    return _rooms.installer.installScriptWindowController();
  }

 private:
  void watchExecutable();
  void armRequestQuitCheck();
  void terminateIfUnused();
  void reportMissingTemplate();

  Platform _platform;
  Rooms _rooms;
  bool _shouldHandleURL = false;
  std::vector<std::unique_ptr<Registration>> _observers;
  std::unique_ptr<Registration> _urlHandler;
  std::unique_ptr<Registration> _volumeObserver;
  std::unique_ptr<Registration> _hotKeyObserver;
  std::unique_ptr<Registration> _accessAction;
  std::shared_ptr<VDKQueue> _fileWatcher;
};

}  // namespace quennel
