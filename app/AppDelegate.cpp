#include "app/AppDelegate.h"

#include "platform/ApplicationActions.h"
#include "platform/Bundle.h"
#include "platform/DistributedNotificationCenter.h"
#include "platform/KernelQueue.h"
#include "platform/PTHotKeyCenter.h"
#include "platform/RunLoop.h"
#include "platform/URLEvents.h"
#include "platform/UserDefaults.h"
#include "platform/UserInterface.h"
#include "platform/VolumeEvents.h"
#include "platform/values/Path.h"
#include "platform/values/Text.h"
#include "platform/values/URL.h"
#include "settings/AuthorizedDir.h"
#include "settings/SharedSettings.h"
#include "watch/VDKQueue.h"

namespace quennel {

namespace {

constexpr std::chrono::seconds quitDelay{11};

}  // namespace

AppDelegate::AppDelegate(const Platform& platform) : _platform(platform), _rooms{_platform} {
  if (const auto path = _platform.mainBundle.pathForResource("Defaults", "plist")) {
    if (const auto defaults = _platform.mainBundle.dictionaryWithContentsOfFile(*path)) {
      sharedDefaults().registerDefaults(*defaults);
    }
  }
  const auto observe = [this](const std::string& name) {
    _observers.push_back(_platform.distributedNotificationCenter.addObserver(
        name, [this](const Notification& notification) { userDefaultsDidChange(notification); }));
  };
  observe(_platform.mainBundle.bundleIdentifier());
  observe(sharedSuiteName);
  _volumeObserver = _platform.volumeEvents.addObserver([this] { workspaceDidMount(); },
                                                       [this] { workspaceDidUnmount(); });
  _accessAction = _platform.actions.addAction(
      restartAccessAction, [this](const auto&) { _rooms.directories.recordsDidChange(); });
  startAccessingURLs();
}

AppDelegate::~AppDelegate() { stopAccessingURLs(); }

void AppDelegate::applicationWillFinishLaunching() {
  _urlHandler =
      _platform.urlEvents.setEventHandler([this](const URLEvent& event) { handleURLEvent(event); });
}

void AppDelegate::applicationDidFinishLaunching() {
  _hotKeyObserver = _platform.hotKeyCenter.addObserver([this] { bindHotKeys(); },
                                                       [this] { checkAndTerminate(); });
  bindHotKeys();
  checkAndTerminate();
  watchExecutable();
}

void AppDelegate::watchExecutable() {
  _fileWatcher = VDKQueue::create({_platform.kernelQueues, _platform.runLoop, _platform.workspace,
                                   _platform.workspaceNotificationCenter});
  if (!_fileWatcher) {
    return;
  }
  _fileWatcher->setDelegate(this);
  std::string path = _platform.mainBundle.executablePath();
  _fileWatcher->addPath(path, NOTE_DELETE | NOTE_WRITE | NOTE_RENAME);
  // A file does not notice when a folder above it is moved, and from then on the resources would
  // not be found.
  while (path.size() > 1) {
    path = deletingLastPathComponent(path);
    _fileWatcher->addPath(path, NOTE_RENAME);
  }
}

void AppDelegate::receivedNotification(VDKQueue&, std::string_view, std::string_view) {
  _platform.runLoop.terminate();
}

void AppDelegate::applicationWillTerminate() {
  if (_fileWatcher) {
    _fileWatcher->setDelegate(nullptr);
    _fileWatcher->removeAllPaths();
  }
  _observers.clear();
  _volumeObserver.reset();
  _hotKeyObserver.reset();
  _accessAction.reset();
}

void AppDelegate::userDefaultsDidChange(const Notification& notification) {
  if (notification.object == "quit") {
    _platform.runLoop.terminate();
    return;
  }
  if (notification.object == "fileTemplates") {
    bindHotKeys();
    checkAndTerminate();
  }
}

void AppDelegate::checkAndTerminate() {
  if (sharedDefaults().boolForKey(runInBackgroundKey)) {
    return;
  }
  _platform.runLoop.dispatchAfter(quitDelay, [this] {
    if (!shouldHandleURL() && _platform.hotKeyCenter.allHotKeys().empty()) {
      _platform.runLoop.terminate();
    }
  });
}

void AppDelegate::armRequestQuitCheck() {
  if (sharedDefaults().boolForKey(runInBackgroundKey)) {
    return;
  }
  _platform.runLoop.dispatchAfter(quitDelay, [this] { terminateIfUnused(); });
}

void AppDelegate::terminateIfUnused() {
  if (panelCount() < 1) {
    _platform.runLoop.terminate();
  }
}

void AppDelegate::handleURLEvent(const URLEvent& event) {
  setShouldHandleURL(true);
  _platform.userInterface.setActivationToken(event.activationToken);
  const auto url = event.directObject ? URL::create(*event.directObject) : std::nullopt;
  const auto query = url ? url->query() : std::nullopt;
  const auto template_ = findTemplateByIndex(integerValue(query.value_or("")));
  if (!template_) {
    reportMissingTemplate();
  } else {
    const auto dir = url ? std::optional(url->path()) : std::nullopt;
    if (sharedDefaults().boolForKey(skipFilenameKey)) {
      createFileAtDir(dir, *template_);
    } else {
      showNewFilePanel(dir, *template_);
    }
  }
  armRequestQuitCheck();
}

void AppDelegate::reportMissingTemplate() {
  const Bundle& bundle = _platform.mainBundle;
  _rooms.panelCount.raise();
  _rooms.util.showAlert(bundle.localizedStringForKey("Unable to create file!"),
                        bundle.localizedStringForKey("No suitable file template found."),
                        AlertStyle::Critical);
  _rooms.panelCount.lower();
}

std::optional<FileTemplate> AppDelegate::findTemplateByIndex(std::int64_t index) const {
  return templateAtIndex(sharedDefaults().objectForKey(fileTemplatesKey), index);
}

}  // namespace quennel
