#pragma once

#include <string>

#include "platform/linux/bus/SessionBus.h"
#include "platform/linux/keys/DesktopHotKeyCenter.h"

namespace quennel {

/// How keys become system-wide in a session.
enum class HotKeyMeans { None, XServer, Portal };

/// What the environment tells: in a Wayland session it is the portal, also where there is an X
/// server for older programs, which sees keys only while such a program is in front.
HotKeyMeans hotKeyMeansOfSession();

/// Opens the backend for the session that the environment describes. What speaks to an X server is
/// the module at `modulePath`, loaded only then, and never unloaded. `bus` is not owned;
/// `applicationIdentifier` is the name of the program's desktop file.
DesktopHotKeyCenter::OpenBackend openHotKeysOfSession(SessionBus& bus,
                                                      std::string applicationIdentifier,
                                                      std::string modulePath);

/// Whether the X display lets this user in; the module is the same. Waits for the display.
bool canUseDisplay(const std::string& modulePath, const std::string& display);

}  // namespace quennel
