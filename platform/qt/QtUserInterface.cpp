#include "platform/qt/QtUserInterface.h"

#include "platform/RunLoop.h"
#include "platform/linux/ui/StandardErrorAlert.h"
#include "platform/qt/AlertPanel.h"
#include "platform/qt/Display.h"
#include "platform/qt/FileTypes.h"
#include "platform/qt/OpenPanelDialog.h"
#include "platform/qt/QtApplication.h"
#include "platform/qt/QtSavePanel.h"

namespace quennel {

int QtUserInterface::runModal(const Alert& alert) {
  int answer = dismissingAnswer(alert);
  const bool isShown = present([&] { answer = AlertPanel(alert).run(); });
  return isShown ? answer : runOnStandardError(alert);
}

std::optional<std::string> QtUserInterface::runModalOpenPanel(const OpenPanel& panel) {
  std::optional<std::string> choice;
  const bool isShown = present([&] { choice = OpenPanelDialog(panel).run(); });
  return isShown ? choice : runOnStandardError(panel);
}

void QtUserInterface::beginOpenPanel(const OpenPanel& panel, const Choice& completion) {
  if (_runLoop.isTerminating()) {
    return;
  }
  if (const auto shared = application()) {
    _begunPanels.begin(shared, panel, completion);
  } else {
    _runLoop.dispatchAsync(
        [completion, choice = runOnStandardError(panel)] { completion(choice); });
  }
}

std::unique_ptr<SavePanel> QtUserInterface::savePanel() {
  return std::make_unique<QtSavePanel>(
      [this](const std::function<void()>& modal) { return present(modal); }, _bundle);
}

bool QtUserInterface::present(const std::function<void()>& modal) {
  if (_runLoop.isTerminating()) {
    return true;
  }
  const auto shared = application();
  if (!shared) {
    return false;
  }
  modal();
  _begunPanels.serve();
  return true;
}

void QtUserInterface::activateIgnoringOtherApps() {
  if (const auto shared = _application.lock()) {
    shared->activate();
  }
}

std::optional<std::string> QtUserInterface::localizedDescriptionOfFileExtension(
    const std::string& extension) {
  return descriptionOfFileExtension(extension);
}

std::shared_ptr<QtApplication> QtUserInterface::application() {
  auto shared = _application.lock();
  if (shared) {
    offerActivationToken();
    return shared;
  }
  const std::string platforms = reachablePlatforms();
  if (platforms.empty()) {
    return nullptr;
  }
  offerActivationToken();
  shared = std::make_shared<QtApplication>(_runLoop, platforms);
  _application = shared;
  return shared;
}

void QtUserInterface::offerActivationToken() {
  if (!_activationToken.empty()) {
    // The toolkit takes them from there: the one for Wayland when a window asks for the keyboard,
    // the one for X11 when it connects.
    qputenv("XDG_ACTIVATION_TOKEN", _activationToken.c_str());
    qputenv("DESKTOP_STARTUP_ID", _activationToken.c_str());
    _activationToken.clear();
  }
}

}  // namespace quennel
