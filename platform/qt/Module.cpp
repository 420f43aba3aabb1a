#include "platform/linux/ui/UserInterfaceModule.h"
#include "platform/qt/QtUserInterface.h"

/// Looked up by name; see UserInterfaceModule.h.
extern "C" [[gnu::visibility("default")]] quennel::UserInterface* quennelMakeUserInterface(
    quennel::RunLoop& runLoop, const quennel::Bundle& bundle) {
  return new quennel::QtUserInterface(runLoop, bundle);
}
