#include "platform/linux/ui/LazyUserInterface.h"

#include <dlfcn.h>

#include <cstdio>
#include <utility>

#include "platform/linux/ui/StandardErrorAlert.h"
#include "platform/linux/ui/UserInterfaceModule.h"

namespace quennel {

LazyUserInterface::LazyUserInterface(RunLoop& runLoop, std::string modulePath)
    : _runLoop(runLoop), _modulePath(std::move(modulePath)) {}

LazyUserInterface::~LazyUserInterface() = default;

int LazyUserInterface::runModal(const Alert& alert) {
  UserInterface* const userInterface = loaded();
  return userInterface ? userInterface->runModal(alert) : runOnStandardError(alert);
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
  return _userInterface.get();
}

std::unique_ptr<UserInterface> LazyUserInterface::load() const {
  // Never unloaded: the toolkit leaves threads and exit handlers behind that point into it.
  void* const module = dlopen(_modulePath.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
  void* const symbol = module ? dlsym(module, makeUserInterfaceSymbol) : nullptr;
  if (!symbol) {
    std::fprintf(stderr, "quennelhelper: nothing can be shown on screen: %s\n", dlerror());
    return nullptr;
  }
  return std::unique_ptr<UserInterface>(reinterpret_cast<MakeUserInterface*>(symbol)(_runLoop));
}

}  // namespace quennel
