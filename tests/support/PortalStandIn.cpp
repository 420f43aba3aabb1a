#include "tests/support/PortalStandIn.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "platform/linux/bus/BusPropertyList.h"

namespace quennel::test {
namespace {

constexpr auto busName = "org.freedesktop.portal.Desktop";
constexpr auto desktopPath = "/org/freedesktop/portal/desktop";
constexpr auto shortcutsInterface = "org.freedesktop.portal.GlobalShortcuts";
constexpr auto requestInterface = "org.freedesktop.portal.Request";
constexpr auto sessionInterface = "org.freedesktop.portal.Session";
constexpr auto notAllowed = "org.freedesktop.portal.Error.NotAllowed";
constexpr auto invalidArgument = "org.freedesktop.portal.Error.InvalidArgument";

constexpr std::uint32_t granted = 0;
constexpr std::uint32_t declined = 1;

/// Where the objects that a connection makes have their places.
std::string pathFor(const char* kind, const std::string& sender, const std::string& token) {
  std::string name = sender.substr(1);
  std::ranges::replace(name, '.', '_');
  return std::string(desktopPath) + "/" + kind + "/" + name + "/" + token;
}

BusMessage newSignal(const SessionBus& bus, const std::string& path, const char* interface,
                     const char* name, const std::string& receiver) {
  sd_bus_message* signal = nullptr;
  requireBus(sd_bus_message_new_signal(bus.connection(), &signal, path.c_str(), interface, name),
             name);
  BusMessage owner(signal);
  requireBus(sd_bus_message_set_destination(signal, receiver.c_str()), name);
  return owner;
}

}  // namespace

const sd_bus_vtable PortalStandIn::registryMethods[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("Register", "sa{sv}", "", introduce, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END};

const sd_bus_vtable PortalStandIn::shortcutsMethods[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("CreateSession", "a{sv}", "o", createSession, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("BindShortcuts", "oa(sa{sv})sa{sv}", "o", bindShortcuts,
                  SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_SIGNAL("Activated", "osta{sv}", 0),
    SD_BUS_SIGNAL("Deactivated", "osta{sv}", 0),
    SD_BUS_VTABLE_END};

const sd_bus_vtable PortalStandIn::sessionMethods[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("Close", "", "", closeSession, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_SIGNAL("Closed", "a{sv}", 0), SD_BUS_VTABLE_END};

PortalStandIn::PortalStandIn(SessionBus& bus) : _bus(bus) {
  sd_bus_slot* slot = nullptr;
  requireBus(
      sd_bus_add_object_vtable(bus.connection(), &slot, desktopPath,
                               "org.freedesktop.host.portal.Registry", registryMethods, this),
      "registry");
  _slots.emplace_back(slot);
  requireBus(sd_bus_add_object_vtable(bus.connection(), &slot, desktopPath, shortcutsInterface,
                                      shortcutsMethods, this),
             "shortcuts");
  _slots.emplace_back(slot);
  requireBus(
      sd_bus_match_signal(bus.connection(), &slot, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                          "org.freedesktop.DBus", "NameOwnerChanged", forgetOwner, this),
      "owners");
  _slots.emplace_back(slot);
  requireBus(sd_bus_request_name(bus.connection(), busName, SD_BUS_NAME_QUEUE), "name");
}

PortalStandIn::~PortalStandIn() { sd_bus_release_name(_bus.connection(), busName); }

std::vector<PortalShortcut> PortalStandIn::bound() const {
  std::vector<PortalShortcut> all;
  for (const auto& session : _sessions) {
    all.insert(all.end(), session->shortcuts.begin(), session->shortcuts.end());
  }
  return all;
}

std::vector<std::string> PortalStandIn::sessionPaths() const {
  std::vector<std::string> paths;
  for (const auto& session : _sessions) {
    paths.push_back(session->path);
  }
  return paths;
}

PortalStandIn::Session* PortalStandIn::sessionAt(const std::string& path) {
  const auto session =
      std::ranges::find_if(_sessions, [&](const auto& each) { return each->path == path; });
  return session == _sessions.end() ? nullptr : session->get();
}

int PortalStandIn::introduce(sd_bus_message* message, void* self, sd_bus_error* error) {
  auto& portal = *static_cast<PortalStandIn*>(self);
  const char* identifier = nullptr;
  requireBus(sd_bus_message_read(message, "s", &identifier), "identifier");
  if (!portal._programs.emplace(sd_bus_message_get_sender(message), identifier).second) {
    return sd_bus_error_set(error, notAllowed, "This connection is known already.");
  }
  portal._introducedPrograms.emplace_back(identifier);
  return sd_bus_reply_method_return(message, nullptr);
}

int PortalStandIn::createSession(sd_bus_message* message, void* self, sd_bus_error* error) {
  auto& portal = *static_cast<PortalStandIn*>(self);
  const std::string sender = sd_bus_message_get_sender(message);
  const auto options = readDictionary(message);
  if (!portal._programs.contains(sender)) {
    return sd_bus_error_set(error, notAllowed, "Who is asking?");
  }
  ++portal._creationCount;
  auto session = std::make_unique<Session>();
  session->owner = sender;
  session->path = pathFor("session", sender, *options.at("session_handle_token").string());
  sd_bus_slot* slot = nullptr;
  requireBus(sd_bus_add_object_vtable(portal._bus.connection(), &slot, session->path.c_str(),
                                      sessionInterface, sessionMethods, self),
             "session");
  session->object.reset(slot);
  const std::string request = pathFor("request", sender, *options.at("handle_token").string());
  requireBus(sd_bus_reply_method_return(message, "o", request.c_str()), "reply");
  const auto response = newSignal(portal._bus, request, requestInterface, "Response", sender);
  requireBus(sd_bus_message_append(response.get(), "ua{sv}", granted, 1, "session_handle", "s",
                                   session->path.c_str()),
             "response");
  portal._sessions.push_back(std::move(session));
  return sd_bus_send(nullptr, response.get(), nullptr);
}

int PortalStandIn::bindShortcuts(sd_bus_message* message, void* self, sd_bus_error* error) {
  auto& portal = *static_cast<PortalStandIn*>(self);
  const std::string sender = sd_bus_message_get_sender(message);
  const char* path = nullptr;
  requireBus(sd_bus_message_read(message, "o", &path), "session");
  auto shortcuts = readPortalShortcuts(message);
  requireBus(sd_bus_message_skip(message, "s"), "parent window");
  const auto options = readDictionary(message);
  Session* const session = portal.sessionAt(path);
  if (!session || session->owner != sender) {
    return sd_bus_error_set(error, invalidArgument, "There is no such session.");
  }
  if (std::exchange(session->hasBound, true)) {
    return sd_bus_error_set(error, notAllowed, "A session binds once.");
  }
  const std::string request = pathFor("request", sender, *options.at("handle_token").string());
  const int replied = sd_bus_reply_method_return(message, "o", request.c_str());
  portal._questions.push_back({request, path, std::move(shortcuts)});
  portal.answer(portal.user);
  return replied;
}

int PortalStandIn::closeSession(sd_bus_message* message, void* self, sd_bus_error*) {
  auto& portal = *static_cast<PortalStandIn*>(self);
  const std::string path = sd_bus_message_get_path(message);
  std::erase_if(portal._sessions, [&](const auto& session) { return session->path == path; });
  return sd_bus_reply_method_return(message, nullptr);
}

int PortalStandIn::forgetOwner(sd_bus_message* message, void* self, sd_bus_error*) {
  const char* name = nullptr;
  const char* newOwner = nullptr;
  requireBus(sd_bus_message_read(message, "sss", &name, nullptr, &newOwner), "owner");
  if (*newOwner == '\0') {
    std::erase_if(static_cast<PortalStandIn*>(self)->_sessions,
                  [&](const auto& session) { return session->owner == name; });
  }
  return 0;
}

void PortalStandIn::answer(User decision) {
  if (decision == User::IsAway) {
    return;
  }
  for (const Question& question : std::exchange(_questions, {})) {
    decide(question, decision);
  }
}

void PortalStandIn::decide(const Question& question, User decision) {
  Session* const session = sessionAt(question.session);
  if (!session) {
    return;
  }
  const auto response =
      newSignal(_bus, question.request, requestInterface, "Response", session->owner);
  if (decision == User::Declines) {
    requireBus(sd_bus_message_append(response.get(), "ua{sv}", declined, 0), "response");
  } else {
    for (const PortalShortcut& shortcut : question.shortcuts) {
      if (isFree(shortcut.trigger)) {
        session->shortcuts.push_back(shortcut);
      }
    }
    requireBus(sd_bus_message_append(response.get(), "u", granted), "response");
    appendPortalResults(response.get(), session->shortcuts);
  }
  requireBus(sd_bus_send(nullptr, response.get(), nullptr), "response");
}

bool PortalStandIn::isFree(const std::string& trigger) const {
  const auto taken = bound();
  return !heldTriggers.contains(trigger) &&
         std::ranges::none_of(
             taken, [&](const PortalShortcut& other) { return other.trigger == trigger; });
}

void PortalStandIn::press(const std::string& trigger) {
  for (const auto& session : _sessions) {
    for (const PortalShortcut& shortcut : session->shortcuts) {
      if (shortcut.trigger == trigger) {
        sendActivation("Activated", *session, shortcut.identifier);
        return sendActivation("Deactivated", *session, shortcut.identifier);
      }
    }
  }
}

void PortalStandIn::sendActivation(const char* signal, const Session& session,
                                   const std::string& identifier) {
  const auto message = newSignal(_bus, desktopPath, shortcutsInterface, signal, session.owner);
  constexpr std::uint64_t anyTime = 1;
  requireBus(
      sd_bus_message_append(message.get(), "osta{sv}", session.path.c_str(), identifier.c_str(),
                            anyTime, 1, "activation_token", "s", "token"),
      signal);
  requireBus(sd_bus_send(nullptr, message.get(), nullptr), signal);
}

void PortalStandIn::closeSessions() {
  for (const auto& session : std::exchange(_sessions, {})) {
    const auto message = newSignal(_bus, session->path, sessionInterface, "Closed", session->owner);
    requireBus(sd_bus_message_append(message.get(), "a{sv}", 0), "closed");
    requireBus(sd_bus_send(nullptr, message.get(), nullptr), "closed");
  }
}

}  // namespace quennel::test
