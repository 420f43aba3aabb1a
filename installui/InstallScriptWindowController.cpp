#include "installui/InstallScriptWindowController.h"

#include <chrono>

#include "platform/Bundle.h"
#include "platform/Image.h"
#include "platform/Pasteboard.h"
#include "platform/RunLoop.h"
#include "platform/Windowing.h"
#include "platform/Workspace.h"
#include "platform/values/Path.h"
#include "platform/values/Text.h"

namespace quennel {

InstallScriptWindowController::InstallScriptWindowController(const Services& services)
    : _services(services), _windowing(services.userInterface.windowing()) {}

InstallScriptWindowController::~InstallScriptWindowController() = default;

Window* InstallScriptWindowController::window() {
  if (!_window && _windowing) {
    _window = _windowing->loadInstallScriptWindow(*this);
    if (_window) {
      _imageView = std::make_unique<DragDropImageView>(_window->imageView(), _services.fileManager,
                                                       _services.securityScope);
      _imageView->setDelegate(this);
      windowDidLoad();
    }
  }
  return _window.get();
}

void InstallScriptWindowController::windowDidLoad() {
  const std::string path = _scriptPath.value_or("");
  _window->filenameTextField().setStringValue(lastPathComponent(path));
  _window->filenameTextField().setToolTip(path);

  const auto icon = _windowing->iconForFile(path);
  _imageView->setImage(icon ? icon->resized({128, 128}) : nullptr);
  _imageView->setPath(_scriptPath);
  _imageView->setToolTip(path);

  const std::string folder = _destDir.value_or("");
  _window->messageTextField().setStringValue(
      formatted(localizedText("Please drag and drop the above script into the \"%@\" dir."),
                lastPathComponent(folder)));
  _window->setExpectedDestination(folder);
}

void InstallScriptWindowController::didClickHelp(const View* sender) {
  if (!_myPopover) {
    makePopover();
  }
  _myPopover->showRelativeToRect(sender ? sender->frame() : Rect(), *_window, RectEdge::MinY);
}

void InstallScriptWindowController::makePopover() {
  _cmdView = _windowing->loadInstallScriptCmdView();
  _installScriptCmdViewController = std::make_unique<InstallScriptCmdViewController>(*_cmdView);
  _installScriptCmdViewController->viewDidLoad();
  _installScriptCmdViewController->setCommandString(
      formatted("cp '%@' '%@/'", _window->filenameTextField().toolTip(), _destDir.value_or("")));
  _myPopover = _windowing->makePopover();
  _myPopover->setContentView(*_cmdView);
  _myPopover->setBehavior(PopoverBehavior::Transient);
}

void InstallScriptWindowController::copyPath(const View*) {
  if (!_scriptPath) {
    return;
  }
  Pasteboard& pasteboard = _windowing->generalPasteboard();
  pasteboard.clearContents();
  pasteboard.setString(*_scriptPath, pasteboard_type::string);
}

void InstallScriptWindowController::openDestination(const View*) {
  if (_destDir) {
    _services.workspace.openFile(*_destDir);
  }
}

void InstallScriptWindowController::windowWillClose() { _windowing->stopModal(); }

void InstallScriptWindowController::dropComplete(const std::optional<std::string>& path) {
  if (path && _destDir && deletingLastPathComponent(*path) == *_destDir) {
    _window->close();
  }
}

void InstallScriptWindowController::dropFail(const std::optional<std::string>& path) {
  if (!path) {
    return;
  }
  // Not before the drag has ended. The window may close, but is not dropped before this is due.
  _services.runLoop.dispatchAfter(std::chrono::milliseconds(300),
                                  [controller = weak_from_this(), path = *path] {
                                    if (const auto self = controller.lock()) {
                                      self->reportFailedWriting(path);
                                    }
                                  });
}

void InstallScriptWindowController::reportFailedWriting(const std::string& path) const {
  showAlert(localizedText("Unable to install script!"),
            formatted(localizedText("Unable to write to: %@"), path), AlertStyle::Critical);
}

void InstallScriptWindowController::showAlert(const std::optional<std::string>& title,
                                              const std::optional<std::string>& message,
                                              AlertStyle style) const {
  _services.userInterface.runModal(
      {.messageText = title, .informativeText = message, .alertStyle = style, .buttons = {}});
}

std::string InstallScriptWindowController::localizedText(const std::string& key) const {
  return _services.bundle.localizedStringForKey(key);
}

}  // namespace quennel
