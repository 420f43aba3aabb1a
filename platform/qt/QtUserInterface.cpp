#include "platform/qt/QtUserInterface.h"

#include "platform/RunLoop.h"
#include "platform/linux/ui/StandardErrorAlert.h"
#include "platform/qt/AlertPanel.h"
#include "platform/qt/Display.h"
#include "platform/qt/FileTypes.h"
#include "platform/qt/QtApplication.h"

namespace quennel {

int QtUserInterface::runModal(const Alert& alert) {
  if (_runLoop.isTerminating()) {
    return dismissingAnswer(alert);
  }
  const auto shared = application();
  return shared ? AlertPanel(alert).run() : runOnStandardError(alert);
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
  if (!shared) {
    const std::string platforms = reachablePlatforms();
    if (platforms.empty()) {
      return nullptr;
    }
    shared = std::make_shared<QtApplication>(_runLoop, platforms);
    _application = shared;
  }
  return shared;
}

}  // namespace quennel
