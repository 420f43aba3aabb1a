#include "platform/linux/keys/HotKeyModule.h"
#include "platform/linux/keys/x11/X11HotKeys.h"
#include "platform/linux/x11/XCB.h"

// NOLINTNEXTLINE(misc-use-internal-linkage): found by its name
extern "C" __attribute__((visibility("default"))) bool quennelCanUseX11Display(
    const char* display) {
  const quennel::XCBConnection connection(xcb_connect(display, nullptr));
  return xcb_connection_has_error(connection.get()) == 0;
}

// NOLINTNEXTLINE(misc-use-internal-linkage): found by its name
extern "C" __attribute__((visibility("default"))) quennel::HotKeyBackend* quennelOpenX11HotKeys(
    sd_event* event, quennel::RunLoop& runLoop, quennel::HotKeyListener& listener,
    quennel::Error* error) {
  return quennel::X11HotKeys::open(event, runLoop, listener, error).release();
}
