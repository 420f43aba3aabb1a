#include "platform/linux/ui/LazyUserInterface.h"

#include <dlfcn.h>

#include <cstdio>
#include <utility>

#include "platform/RunLoop.h"
#include "platform/linux/base/OpenedLibrary.h"
#include "platform/linux/ui/DismissedSavePanel.h"
#include "platform/linux/ui/StandardErrorAlert.h"
#include "platform/linux/ui/UserInterfaceModule.h"

namespace quennel {

LazyUserInterface::LazyUserInterface(RunLoop& runLoop, const Bundle& bundle, std::string modulePath)
    : _runLoop(runLoop), _bundle(bundle), _modulePath(std::move(modulePath)) {}

LazyUserInterface::~LazyUserInterface() = default;

int LazyUserInterface::runModal(const Alert& alert) {
  UserInterface* const userInterface = loaded();
  return userInterface ? userInterface->runModal(alert) : runOnStandardError(alert);
}

std::optional<std::string> LazyUserInterface::runModalOpenPanel(const OpenPanel& panel) {
  UserInterface* const userInterface = loaded();
  return userInterface ? userInterface->runModalOpenPanel(panel) : runOnStandardError(panel);
}

void LazyUserInterface::beginOpenPanel(const OpenPanel& panel, const Choice& completion) {
  if (UserInterface* const userInterface = loaded()) {
    userInterface->beginOpenPanel(panel, completion);
    return;
  }
  _runLoop.dispatchAsync([completion, choice = runOnStandardError(panel)] { completion(choice); });
}

Windowing* LazyUserInterface::windowing() {
  UserInterface* const userInterface = loaded();
  return userInterface ? userInterface->windowing() : nullptr;
}

void LazyUserInterface::setActivationToken(const std::string& token) { _activationToken = token; }

std::unique_ptr<SavePanel> LazyUserInterface::savePanel() {
  UserInterface* const userInterface = loaded();
  return userInterface ? userInterface->savePanel() : std::make_unique<DismissedSavePanel>();
}

void LazyUserInterface::activateIgnoringOtherApps() {
  if (_userInterface) {
    _userInterface->activateIgnoringOtherApps();
  }
}

std::optional<std::string> LazyUserInterface::localizedDescriptionOfFileExtension(
    const std::string& extension) {
  UserInterface* const userInterface = loaded();
  return userInterface ? userInterface->localizedDescriptionOfFileExtension(extension)
                       : std::nullopt;
}

UserInterface* LazyUserInterface::loaded() {
  if (!_loadingTried) {
    _loadingTried = true;
    _userInterface = load();
  }
  if (_userInterface) {
    _userInterface->setActivationToken(std::exchange(_activationToken, {}));
  }
  return _userInterface.get();
}

std::unique_ptr<UserInterface> LazyUserInterface::load() const {
  const auto make = OpenedLibrary(_modulePath).function<MakeUserInterface>(makeUserInterfaceSymbol);
  if (!make) {
    std::fprintf(stderr, "quennelhelper: nothing can be shown on screen: %s\n", dlerror());
    return nullptr;
  }
  return std::unique_ptr<UserInterface>(make(_runLoop, _bundle));
}

}  // namespace quennel
