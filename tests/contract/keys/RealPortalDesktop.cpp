#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <optional>
#include <set>
#include <stdexcept>
#include <utility>
#include <vector>

#include "platform/linux/bus/SessionBus.h"
#include "platform/linux/events/EventRunLoop.h"
#include "platform/linux/keys/DesktopHotKeyCenter.h"
#include "platform/linux/keys/PortalHotKeys.h"
#include "tests/contract/keys/HotKeyDesktop.h"
#include "tests/support/PortalShortcut.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/Process.h"
#include "tests/support/TemporaryDirectory.h"

namespace quennel::test {
namespace {

constexpr auto portalProgram = "/usr/libexec/xdg-desktop-portal";
constexpr auto backendName = "org.freedesktop.impl.portal.desktop.test";
constexpr auto backendInterface = "org.freedesktop.impl.portal.GlobalShortcuts";

/// A desktop's half of the portal, with at most one session.
class Backend {
 public:
  explicit Backend(SessionBus& bus) : _bus(bus) {
    sd_bus_slot* slot = nullptr;
    requireBus(sd_bus_add_object_vtable(bus.connection(), &slot, PortalRequest::objectPath,
                                        backendInterface, methods, this),
               "backend");
    _object.reset(slot);
    requireBus(sd_bus_request_name(bus.connection(), backendName, 0), "backend");
  }

  std::set<std::string> heldTriggers;

  const std::vector<PortalShortcut>& bound() const { return _bound; }

  void press(const std::string& trigger) {
    const auto shortcut = std::ranges::find(_bound, trigger, &PortalShortcut::trigger);
    if (shortcut == _bound.end()) {
      return;
    }
    for (const char* const signal : {"Activated", "Deactivated"}) {
      constexpr std::uint64_t anyTime = 1;
      requireBus(sd_bus_emit_signal(_bus.connection(), PortalRequest::objectPath, backendInterface,
                                    signal, "osta{sv}", _session.c_str(),
                                    shortcut->identifier.c_str(), anyTime, 0),
                 signal);
    }
  }

 private:
  static int createSession(sd_bus_message* message, void* self, sd_bus_error*) {
    auto& backend = *static_cast<Backend*>(self);
    const char* path = nullptr;
    requireBus(sd_bus_message_read(message, "oo", nullptr, &path), "session");
    backend._session = path;
    backend._bound.clear();
    sd_bus_slot* slot = nullptr;
    requireBus(
        sd_bus_add_object_vtable(backend._bus.connection(), &slot, path,
                                 "org.freedesktop.impl.portal.Session", sessionMethods, self),
        "session");
    backend._sessionObject.reset(slot);
    return sd_bus_reply_method_return(message, "ua{sv}", 0U, 0);
  }

  static int bindShortcuts(sd_bus_message* message, void* self, sd_bus_error*) {
    auto& backend = *static_cast<Backend*>(self);
    requireBus(sd_bus_message_skip(message, "oo"), "shortcuts");
    for (auto& shortcut : readPortalShortcuts(message)) {
      if (!backend.heldTriggers.contains(shortcut.trigger)) {
        backend._bound.push_back(std::move(shortcut));
      }
    }
    sd_bus_message* reply = nullptr;
    requireBus(sd_bus_message_new_method_return(message, &reply), "reply");
    const BusMessage owner(reply);
    requireBus(sd_bus_message_append(reply, "u", 0U), "reply");
    appendPortalResults(reply, backend._bound);
    return sd_bus_send(nullptr, reply, nullptr);
  }

  static int closeSession(sd_bus_message* message, void* self, sd_bus_error*) {
    auto& backend = *static_cast<Backend*>(self);
    const std::string path = sd_bus_message_get_path(message);
    if (path == backend._session) {
      backend._bound.clear();
    }
    return sd_bus_reply_method_return(message, nullptr);
  }

  static const sd_bus_vtable methods[];
  static const sd_bus_vtable sessionMethods[];

  SessionBus& _bus;
  BusSlot _object;
  BusSlot _sessionObject;
  std::string _session;
  std::vector<PortalShortcut> _bound;
};

const sd_bus_vtable Backend::methods[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("CreateSession", "oosa{sv}", "ua{sv}", createSession, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("BindShortcuts", "ooa(sa{sv})sa{sv}", "ua{sv}", bindShortcuts,
                  SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_SIGNAL("Activated", "osta{sv}", 0),
    SD_BUS_SIGNAL("Deactivated", "osta{sv}", 0),
    SD_BUS_VTABLE_END};

const sd_bus_vtable Backend::sessionMethods[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("Close", "", "", closeSession, SD_BUS_VTABLE_UNPRIVILEGED), SD_BUS_VTABLE_END};

/// The portal that desktops ship, on a bus of its own.
class RealPortalDesktop final : public HotKeyDesktop {
 public:
  RealPortalDesktop() {
    std::filesystem::create_directory(_folder / "portals");
    std::ofstream(_folder / "portals/test.portal")
        << "[portal]\nDBusName=" << backendName << "\nInterfaces=" << backendInterface
        << ";\nUseIn=test\n";
    _portal.emplace(std::vector<std::string>{portalProgram},
                    Process::Environment{{"DBUS_SESSION_BUS_ADDRESS", _bus.address()},
                                         {"HOME", _folder.path()},
                                         {"XDG_RUNTIME_DIR", _folder.path()},
                                         {"XDG_CURRENT_DESKTOP", "test"},
                                         {"XDG_DESKTOP_PORTAL_DIR", _folder / "portals"}});
    if (!runUntil([this] { return isRunning(); })) {
      throw std::runtime_error("the portal does not start: " + _portal->errorOutput());
    }
    _center.emplace(_runLoop, [this](HotKeyListener& listener, Error* error) {
      return PortalHotKeys::open(_connection, "net.brellow.QuennelHelper", listener, error);
    });
  }

  PTHotKeyCenter& center() override { return *_center; }
  void destroyCenter() override { _center.reset(); }
  RunLoop& runLoop() override { return _runLoop; }
  void press(const std::string& accelerator) override {
    if (!runUntil([this] { return bound() == registered(); })) {
      throw std::runtime_error("the portal has not bound what is registered");
    }
    _backend.press(portalTrigger(accelerator));
  }
  void holdByAnotherProgram(const std::string& accelerator) override {
    _backend.heldTriggers.insert(portalTrigger(accelerator));
  }
  void end() override { _portal->terminate(); }

 private:
  bool isRunning() {
    sd_bus_message* reply = nullptr;
    const int result = sd_bus_call_method(
        _backendConnection.connection(), "org.freedesktop.DBus", "/org/freedesktop/DBus",
        "org.freedesktop.DBus", "NameHasOwner", nullptr, &reply, "s", PortalRequest::busName);
    const BusMessage owner(reply);
    int hasOwner = 0;
    return result >= 0 && sd_bus_message_read(reply, "b", &hasOwner) > 0 && hasOwner != 0;
  }

  std::vector<std::string> bound() const {
    std::vector<std::string> identifiers;
    for (const PortalShortcut& shortcut : _backend.bound()) {
      identifiers.push_back(shortcut.identifier);
    }
    return identifiers;
  }
  std::vector<std::string> registered() const {
    std::vector<std::string> identifiers;
    for (const auto& hotKey : _center->allHotKeys()) {
      identifiers.push_back(hotKey->identifier());
    }
    return identifiers;
  }

  TemporaryDirectory _folder;
  PrivateBus _bus;
  EventRunLoop _runLoop;
  SessionBus _backendConnection{_runLoop, _bus.address()};
  SessionBus _connection{_runLoop, _bus.address()};
  Backend _backend{_backendConnection};
  std::optional<Process> _portal;
  std::optional<DesktopHotKeyCenter> _center;
};

}  // namespace

const char* missingForRealPortal() {
  if (!PrivateBus::isAvailable()) {
    return "dbus-daemon";
  }
  return std::filesystem::exists(portalProgram) ? nullptr : "xdg-desktop-portal";
}

std::unique_ptr<HotKeyDesktop> makeRealPortalDesktop() {
  return std::make_unique<RealPortalDesktop>();
}

}  // namespace quennel::test
