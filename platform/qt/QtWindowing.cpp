#include "platform/qt/QtWindowing.h"

#include <QtCore/QDeadlineTimer>
#include <QtCore/QEventLoop>
#include <utility>

#include "platform/RunLoop.h"
#include "platform/qt/PanelWindow.h"
#include "platform/qt/QtApplication.h"
#include "platform/qt/QtImage.h"
#include "platform/qt/QtInstallScriptWindow.h"
#include "platform/qt/QtPopover.h"

namespace quennel {

QtWindowing::QtWindowing(RunLoop& runLoop, const Bundle& bundle, ApplicationProvider application)
    : _runLoop(runLoop), _bundle(bundle), _application(std::move(application)) {}

std::unique_ptr<InstallScriptWindow> QtWindowing::loadInstallScriptWindow(
    InstallScriptWindow::Owner& owner) {
  auto application = _application();
  return application
             ? std::make_unique<QtInstallScriptWindow>(std::move(application), _bundle, owner)
             : nullptr;
}

std::unique_ptr<InstallScriptCmdView> QtWindowing::loadInstallScriptCmdView() {
  return std::make_unique<QtInstallScriptCmdView>();
}

std::unique_ptr<Popover> QtWindowing::makePopover() { return std::make_unique<QtPopover>(); }

void QtWindowing::runModalForWindow(Window& window) {
  if (_runLoop.isTerminating()) {
    return;
  }
  auto& shown = static_cast<QtInstallScriptWindow&>(window);
  QEventLoop loop;
  _modalLoops.push_back(&loop);
  showInFront(shown.dialog());
  loop.exec();
  std::erase(_modalLoops, &loop);
  shown.dialog().hide();
  waitForDragToEnd(shown);
}

void QtWindowing::stopModal() {
  if (!_modalLoops.empty()) {
    _modalLoops.back()->quit();
  }
}

std::shared_ptr<const Image> QtWindowing::iconForFile(const std::string& path) {
  return QtImage::iconForFile(path);
}

/// The drop that closed the window may not be over for the target, which has to hear the end of it.
/// Also lets the window go from the screen.
void QtWindowing::waitForDragToEnd(const QtInstallScriptWindow& window) {
  const QDeadlineTimer deadline(1000);
  QEventLoop loop;
  loop.processEvents();
  while (window.isDragging() && !deadline.hasExpired()) {
    loop.processEvents(QEventLoop::WaitForMoreEvents, 20);
  }
}

}  // namespace quennel
