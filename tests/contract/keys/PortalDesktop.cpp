#include <optional>
#include <set>
#include <stdexcept>

#include "platform/linux/bus/SessionBus.h"
#include "platform/linux/events/EventRunLoop.h"
#include "platform/linux/keys/DesktopHotKeyCenter.h"
#include "platform/linux/keys/PortalHotKeys.h"
#include "tests/contract/keys/HotKeyDesktop.h"
#include "tests/support/PortalStandIn.h"
#include "tests/support/PrivateBus.h"

namespace quennel::test {
namespace {

class PortalDesktop final : public HotKeyDesktop {
 public:
  PortalDesktop() {
    _portal.emplace(_portalConnection);
    _center.emplace(_runLoop, [this](HotKeyListener& listener, Error* error) {
      return PortalHotKeys::open(_connection, "net.brellow.QuennelHelper", listener, error);
    });
  }

  PTHotKeyCenter& center() override { return *_center; }
  void destroyCenter() override { _center.reset(); }
  RunLoop& runLoop() override { return _runLoop; }

  /// What is bound takes effect only when the portal has been asked and has answered.
  void press(const std::string& accelerator) override {
    if (!runUntil([this] { return bound() == registered(); })) {
      throw std::runtime_error("the portal has not bound what is registered");
    }
    _portal->press(portalTrigger(accelerator));
  }
  void holdByAnotherProgram(const std::string& accelerator) override {
    _portal->heldTriggers.insert(portalTrigger(accelerator));
  }
  void end() override { _portal.reset(); }

 private:
  std::set<std::string> bound() const {
    std::set<std::string> identifiers;
    for (const auto& shortcut : _portal->bound()) {
      identifiers.insert(shortcut.identifier);
    }
    return identifiers;
  }
  std::set<std::string> registered() const {
    std::set<std::string> identifiers;
    for (const auto& hotKey : _center->allHotKeys()) {
      identifiers.insert(hotKey->identifier());
    }
    return identifiers;
  }

  PrivateBus _bus;
  EventRunLoop _runLoop;
  SessionBus _portalConnection{_runLoop, _bus.address()};
  SessionBus _connection{_runLoop, _bus.address()};
  std::optional<PortalStandIn> _portal;
  std::optional<DesktopHotKeyCenter> _center;
};

}  // namespace

std::unique_ptr<HotKeyDesktop> makePortalDesktop() { return std::make_unique<PortalDesktop>(); }

}  // namespace quennel::test
