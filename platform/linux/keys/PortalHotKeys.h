#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/bus/BusTypes.h"
#include "platform/linux/bus/SessionBus.h"
#include "platform/linux/keys/HotKeyBackend.h"
#include "platform/linux/keys/PortalRequest.h"

namespace quennel {

/// Keys bound by the desktop portal: the way of Wayland, where the desktop alone sees the keyboard.
///
/// The portal binds a whole set, once a session, and may ask the user. So changes are gathered
/// until the work on the stack has returned and then answered by a new session, unless the set is
/// the one that is bound already. A combination counts as bound until the portal has answered.
class PortalHotKeys final : public HotKeyBackend {
 public:
  /// `applicationIdentifier` is the name of the program's desktop file. Neither `bus` nor
  /// `listener` is owned. Null, with the reason, when there is no bus.
  static std::unique_ptr<PortalHotKeys> open(SessionBus& bus, std::string applicationIdentifier,
                                             HotKeyListener& listener, Error* error);
  PortalHotKeys(const PortalHotKeys&) = delete;
  PortalHotKeys& operator=(const PortalHotKeys&) = delete;
  ~PortalHotKeys() override;

  bool bind(const Request& request, Error* error) override;
  void unbind(HotKeyNumber number) override;
  bool isAlive() const override { return _bus.isOpen(); }

 private:
  /// What the portal is told of a combination.
  struct Shortcut {
    std::string identifier;
    std::string description;
    std::string trigger;

    bool operator==(const Shortcut&) const = default;
  };
  using Shortcuts = std::vector<Shortcut>;
  struct Binding {
    HotKeyNumber number;
    Shortcut shortcut;
  };

  PortalHotKeys(SessionBus& bus, std::string applicationIdentifier, HotKeyListener& listener);

  bool watchPortal();
  template <void (PortalHotKeys::*take)(sd_bus_message*)>
  bool addMatch(const char* rule);
  void introduceProgram();

  std::string freeIdentifier(const std::string& wanted) const;
  Shortcuts wantedShortcuts() const;
  void updateLater();
  void update();
  void createSession();
  void bindShortcuts();
  void closeSession();
  void forgetSession();
  void lose(const Shortcuts& shortcuts);

  std::string newToken();
  using Results = std::optional<PropertyList::Dictionary>;
  void ask(const BusMessage& call, const std::string& token,
           void (PortalHotKeys::*take)(const Results& results));
  void takeSession(const Results& results);
  void takeShortcuts(const Results& results);

  void takeActivated(sd_bus_message* message);
  void takeClosed(sd_bus_message* message);
  void takeOwnerChanged(sd_bus_message* message);
  void takeNewPortal();
  void takeDisconnected(sd_bus_message* message);

  SessionBus& _bus;
  std::string _applicationIdentifier;
  HotKeyListener& _listener;
  std::vector<BusSlot> _matches;
  std::vector<Binding> _bindings;
  /// The path of the session, empty when there is none, and what it has bound or been asked to.
  std::string _session;
  Shortcuts _sessionShortcuts;
  /// The session before it: presses that were on their way when it was closed count.
  std::string _closedSession;
  /// The question that the portal has not yet answered.
  std::unique_ptr<PortalRequest> _request;
  std::uint64_t _lastToken = 0;
  /// Shared with the update that is queued; null when none is.
  std::shared_ptr<const bool> _queuedUpdate;
};

}  // namespace quennel
