#include "platform/linux/keys/SessionHotKeys.h"

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <utility>

#include "platform/linux/base/OpenedLibrary.h"
#include "platform/linux/keys/HotKeyModule.h"
#include "platform/linux/keys/PortalHotKeys.h"

namespace quennel {
namespace {

std::string_view environment(const char* name) {
  const char* const value = std::getenv(name);
  return value ? value : "";
}

std::unique_ptr<HotKeyBackend> openModule(const std::string& path, EventRunLoop& runLoop,
                                          HotKeyListener& listener, Error* error) {
  const auto open = OpenedLibrary(path).function<OpenX11HotKeys>(openX11HotKeysSymbol);
  if (!open) {
    failWith(error, ENOENT, Error::Kind::MissingKeyModule);
    return nullptr;
  }
  return std::unique_ptr<HotKeyBackend>(open(runLoop.handle(), runLoop, listener, error));
}

}  // namespace

HotKeyMeans hotKeyMeansOfSession() {
  if (!environment("WAYLAND_DISPLAY").empty() || environment("XDG_SESSION_TYPE") == "wayland") {
    return HotKeyMeans::Portal;
  }
  return environment("DISPLAY").empty() ? HotKeyMeans::None : HotKeyMeans::XServer;
}

DesktopHotKeyCenter::OpenBackend openHotKeysOfSession(SessionBus& bus,
                                                      std::string applicationIdentifier,
                                                      std::string modulePath) {
  return [&bus, applicationIdentifier = std::move(applicationIdentifier),
          modulePath = std::move(modulePath)](HotKeyListener& listener,
                                              Error* error) -> std::unique_ptr<HotKeyBackend> {
    switch (hotKeyMeansOfSession()) {
      case HotKeyMeans::Portal:
        return PortalHotKeys::open(bus, applicationIdentifier, listener, error);
      case HotKeyMeans::XServer:
        return openModule(modulePath, bus.runLoop(), listener, error);
      case HotKeyMeans::None:
        break;
    }
    failWith(error, ENOTSUP, Error::Kind::NoKeysInSession);
    return nullptr;
  };
}

bool canUseDisplay(const std::string& modulePath, const std::string& display) {
  const auto canUse = OpenedLibrary(modulePath).function<CanUseX11Display>(canUseX11DisplaySymbol);
  return canUse && canUse(display.c_str());
}

}  // namespace quennel
