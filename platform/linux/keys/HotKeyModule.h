#pragma once

#include <systemd/sd-event.h>

#include "platform/Error.h"
#include "platform/RunLoop.h"
#include "platform/linux/keys/HotKeyBackend.h"

namespace quennel {

/// What the module for X11 offers: the backend, which the caller owns, or null with the reason.
using OpenX11HotKeys = HotKeyBackend*(sd_event* event, RunLoop& runLoop, HotKeyListener& listener,
                                      Error* error);
constexpr auto openX11HotKeysSymbol = "quennelOpenX11HotKeys";

/// Whether a display lets this user in. Waits for its answer.
using CanUseX11Display = bool(const char* display);
constexpr auto canUseX11DisplaySymbol = "quennelCanUseX11Display";

}  // namespace quennel
