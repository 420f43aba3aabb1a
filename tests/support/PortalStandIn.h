#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "platform/linux/bus/BusTypes.h"
#include "platform/linux/bus/SessionBus.h"
#include "tests/support/PortalShortcut.h"

namespace quennel::test {

/// The part of a desktop portal that binds shortcuts, with a user whose mind the test knows. It
/// keeps to the rules of the interface: a program outside a sandbox introduces itself first, a
/// session binds once, belongs to the connection that made it and ends with it, answers come as
/// signals of a request's own object, to the asker alone.
class PortalStandIn {
 public:
  enum class User { Agrees, Declines, IsAway };

  /// Takes the name of the portal on the bus, which is not owned, once it is free.
  explicit PortalStandIn(SessionBus& bus);
  PortalStandIn(const PortalStandIn&) = delete;
  PortalStandIn& operator=(const PortalStandIn&) = delete;
  /// The name goes, and with it all sessions.
  ~PortalStandIn();

  User user = User::Agrees;
  /// What other programs have.
  std::set<std::string> heldTriggers;

  /// What all sessions together have bound.
  std::vector<PortalShortcut> bound() const;
  std::size_t sessionCount() const { return _sessions.size(); }
  std::vector<std::string> sessionPaths() const;
  /// How many sessions have ever been asked for.
  int creationCount() const { return _creationCount; }
  /// Who introduced themselves.
  const std::vector<std::string>& introducedPrograms() const { return _introducedPrograms; }

  /// The user presses a combination, in the portal's notation.
  void press(const std::string& trigger);
  /// The user makes up his mind, for all questions that wait.
  void answer(User decision);
  /// The desktop ends all sessions.
  void closeSessions();

 private:
  struct Session {
    std::string path;
    std::string owner;
    bool hasBound = false;
    std::vector<PortalShortcut> shortcuts;
    BusSlot object;
  };
  struct Question {
    std::string request;
    std::string session;
    std::vector<PortalShortcut> shortcuts;
  };

  static int introduce(sd_bus_message* message, void* self, sd_bus_error* error);
  static int createSession(sd_bus_message* message, void* self, sd_bus_error* error);
  static int bindShortcuts(sd_bus_message* message, void* self, sd_bus_error* error);
  static int closeSession(sd_bus_message* message, void* self, sd_bus_error* error);
  static int forgetOwner(sd_bus_message* message, void* self, sd_bus_error* error);
  static const sd_bus_vtable registryMethods[];
  static const sd_bus_vtable shortcutsMethods[];
  static const sd_bus_vtable sessionMethods[];

  Session* sessionAt(const std::string& path);
  void decide(const Question& question, User decision);
  bool isFree(const std::string& trigger) const;
  void sendActivation(const char* signal, const Session& session, const std::string& identifier);

  SessionBus& _bus;
  std::vector<BusSlot> _slots;
  std::vector<std::unique_ptr<Session>> _sessions;
  std::vector<Question> _questions;
  std::map<std::string, std::string> _programs;
  std::vector<std::string> _introducedPrograms;
  int _creationCount = 0;
};

}  // namespace quennel::test
