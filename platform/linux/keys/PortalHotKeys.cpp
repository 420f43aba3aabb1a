#include "platform/linux/keys/PortalHotKeys.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include "platform/linux/bus/BusPropertyList.h"

namespace quennel {
namespace {

constexpr auto shortcutsInterface = "org.freedesktop.portal.GlobalShortcuts";
constexpr auto sessionInterface = "org.freedesktop.portal.Session";
constexpr auto registryInterface = "org.freedesktop.host.portal.Registry";

constexpr auto activatedRule =
    "type='signal',sender='org.freedesktop.portal.Desktop',"
    "path='/org/freedesktop/portal/desktop',"
    "interface='org.freedesktop.portal.GlobalShortcuts',member='Activated'";
constexpr auto closedRule =
    "type='signal',sender='org.freedesktop.portal.Desktop',"
    "interface='org.freedesktop.portal.Session',member='Closed'";
constexpr auto ownerChangedRule =
    "type='signal',sender='org.freedesktop.DBus',path='/org/freedesktop/DBus',"
    "interface='org.freedesktop.DBus',member='NameOwnerChanged',"
    "arg0='org.freedesktop.portal.Desktop'";
// Not from the bus, but from this end of the connection.
constexpr auto disconnectedRule =
    "type='signal',path='/org/freedesktop/DBus/Local',interface='org.freedesktop.DBus.Local',"
    "member='Disconnected'";

/// In the words of the desktops' common notation: "CTRL+LOGO+n".
std::string triggerOf(const KeyCombination& combination) {
  std::string trigger;
  trigger += combination.modifiers & KeyCombination::control ? "CTRL+" : "";
  trigger += combination.modifiers & KeyCombination::alt ? "ALT+" : "";
  trigger += combination.modifiers & KeyCombination::shift ? "SHIFT+" : "";
  trigger += combination.modifiers & KeyCombination::super ? "LOGO+" : "";
  return trigger + combination.key;
}

BusMessage newCall(const SessionBus& bus, const char* path, const char* interface,
                   const char* method) {
  sd_bus_message* call = nullptr;
  const int made = sd_bus_message_new_method_call(bus.connection(), &call, PortalRequest::busName,
                                                  path, interface, method);
  return BusMessage(made < 0 ? nullptr : call);
}

std::string sessionIn(const PropertyList::Dictionary& results) {
  const auto entry = results.find("session_handle");
  const auto* const path = entry == results.end() ? nullptr : entry->second.string();
  return path ? *path : std::string();
}

/// As "a(sa{sv})".
int appendShortcuts(sd_bus_message* message, const auto& shortcuts) {
  int result = sd_bus_message_open_container(message, SD_BUS_TYPE_ARRAY, "(sa{sv})");
  for (auto shortcut = shortcuts.begin(); result >= 0 && shortcut != shortcuts.end(); ++shortcut) {
    result = sd_bus_message_open_container(message, SD_BUS_TYPE_STRUCT, "sa{sv}");
    result =
        result < 0 ? result : sd_bus_message_append(message, "s", shortcut->identifier.c_str());
    result = result < 0 ? result
                        : appendDictionary(message, {{"description", shortcut->description},
                                                     {"preferred_trigger", shortcut->trigger}});
    result = result < 0 ? result : sd_bus_message_close_container(message);
  }
  return result < 0 ? result : sd_bus_message_close_container(message);
}

/// Each shortcut comes as its name and a dictionary of what there is to know about it.
std::vector<std::string> identifiersIn(const PropertyList::Dictionary& results) {
  std::vector<std::string> identifiers;
  const auto entry = results.find("shortcuts");
  const auto* const shortcuts = entry == results.end() ? nullptr : entry->second.array();
  for (const PropertyList& shortcut : shortcuts ? *shortcuts : PropertyList::Array()) {
    const auto* const parts = shortcut.array();
    if (parts && !parts->empty() && parts->front().string()) {
      identifiers.push_back(*parts->front().string());
    }
  }
  return identifiers;
}

}  // namespace

std::unique_ptr<PortalHotKeys> PortalHotKeys::open(SessionBus& bus,
                                                   std::string applicationIdentifier,
                                                   HotKeyListener& listener, Error* error) {
  std::unique_ptr<PortalHotKeys> hotKeys(
      new PortalHotKeys(bus, std::move(applicationIdentifier), listener));
  if (!bus.isOpen() || !hotKeys->watchPortal()) {
    failWith(error, ECONNREFUSED, Error::Kind::UnreachableBus);
    return nullptr;
  }
  hotKeys->introduceProgram();
  return hotKeys;
}

PortalHotKeys::PortalHotKeys(SessionBus& bus, std::string applicationIdentifier,
                             HotKeyListener& listener)
    : _bus(bus), _applicationIdentifier(std::move(applicationIdentifier)), _listener(listener) {}

PortalHotKeys::~PortalHotKeys() { closeSession(); }

template <void (PortalHotKeys::*take)(sd_bus_message*)>
bool PortalHotKeys::addMatch(const char* rule) {
  const auto takeSignal = [](sd_bus_message* message, void* self, sd_bus_error*) {
    (static_cast<PortalHotKeys*>(self)->*take)(message);
    return 0;
  };
  const auto ignoreAnswer = [](sd_bus_message*, void*, sd_bus_error*) { return 0; };
  sd_bus_slot* slot = nullptr;
  if (sd_bus_add_match_async(_bus.connection(), &slot, rule, takeSignal, ignoreAnswer, this) < 0) {
    return false;
  }
  _matches.emplace_back(slot);
  return true;
}

bool PortalHotKeys::watchPortal() {
  return addMatch<&PortalHotKeys::takeActivated>(activatedRule) &&
         addMatch<&PortalHotKeys::takeClosed>(closedRule) &&
         addMatch<&PortalHotKeys::takeOwnerChanged>(ownerChangedRule) &&
         addMatch<&PortalHotKeys::takeDisconnected>(disconnectedRule);
}

/// Programs outside a sandbox say themselves who they are, before anything else that they ask of
/// the portal. Older portals do not know the question and find out by other means.
void PortalHotKeys::introduceProgram() {
  const auto call = newCall(_bus, PortalRequest::objectPath, registryInterface, "Register");
  if (call && sd_bus_message_append(call.get(), "s", _applicationIdentifier.c_str()) >= 0 &&
      appendDictionary(call.get(), {}) >= 0 &&
      sd_bus_message_set_expect_reply(call.get(), 0) >= 0) {
    sd_bus_send(_bus.connection(), call.get(), nullptr);
  }
}

bool PortalHotKeys::bind(const Request& request, Error* error) {
  if (!isAlive()) {
    return failWith(error, ECONNREFUSED, Error::Kind::UnreachableBus);
  }
  const std::string& description = request.title.empty() ? request.identifier : request.title;
  _bindings.push_back(
      {request.number,
       {freeIdentifier(request.identifier), description, triggerOf(request.combination)}});
  updateLater();
  return true;
}

void PortalHotKeys::unbind(HotKeyNumber number) {
  std::erase_if(_bindings, [number](const Binding& binding) { return binding.number == number; });
  updateLater();
}

/// The portal tells shortcuts apart by their identifiers alone.
std::string PortalHotKeys::freeIdentifier(const std::string& wanted) const {
  std::string identifier = wanted;
  const auto isTaken = [&](const Binding& binding) {
    return binding.shortcut.identifier == identifier;
  };
  for (int count = 2; std::ranges::any_of(_bindings, isTaken); ++count) {
    identifier = wanted + "-" + std::to_string(count);
  }
  return identifier;
}

PortalHotKeys::Shortcuts PortalHotKeys::wantedShortcuts() const {
  Shortcuts shortcuts;
  for (const Binding& binding : _bindings) {
    shortcuts.push_back(binding.shortcut);
  }
  return shortcuts;
}

void PortalHotKeys::updateLater() {
  if (_queuedUpdate) {
    return;
  }
  _queuedUpdate = std::make_shared<const bool>(true);
  _bus.runLoop().dispatchAsync([this, queued = std::weak_ptr(_queuedUpdate)] {
    if (!queued.expired()) {
      _queuedUpdate.reset();
      update();
    }
  });
}

/// Does nothing while the portal has a question to answer: the answer leads here again.
void PortalHotKeys::update() {
  if (_request || _sessionShortcuts == wantedShortcuts()) {
    return;
  }
  closeSession();
  if (!_bindings.empty()) {
    createSession();
  }
}

void PortalHotKeys::createSession() {
  const std::string token = newToken();
  auto call = newCall(_bus, PortalRequest::objectPath, shortcutsInterface, "CreateSession");
  if (call && appendDictionary(call.get(), {{"handle_token", token},
                                            {"session_handle_token", newToken()}}) < 0) {
    call.reset();
  }
  ask(call, token, &PortalHotKeys::takeSession);
}

void PortalHotKeys::takeSession(const Results& results) {
  const std::string session = results ? sessionIn(*results) : std::string();
  if (session.empty()) {
    return lose(wantedShortcuts());
  }
  _session = session;
  if (_bindings.empty()) {
    return closeSession();
  }
  bindShortcuts();
}

void PortalHotKeys::bindShortcuts() {
  _sessionShortcuts = wantedShortcuts();
  const std::string token = newToken();
  auto call = newCall(_bus, PortalRequest::objectPath, shortcutsInterface, "BindShortcuts");
  constexpr auto noParentWindow = "";
  if (call && (sd_bus_message_append(call.get(), "o", _session.c_str()) < 0 ||
               appendShortcuts(call.get(), _sessionShortcuts) < 0 ||
               sd_bus_message_append(call.get(), "s", noParentWindow) < 0 ||
               appendDictionary(call.get(), {{"handle_token", token}}) < 0)) {
    call.reset();
  }
  ask(call, token, &PortalHotKeys::takeShortcuts);
}

/// Whatever is not in the answer has been refused.
void PortalHotKeys::takeShortcuts(const Results& results) {
  const auto identifiers = results ? identifiersIn(*results) : std::vector<std::string>();
  _closedSession.clear();
  Shortcuts refused = std::exchange(_sessionShortcuts, {});
  const auto firstBound =
      std::stable_partition(refused.begin(), refused.end(), [&](const Shortcut& shortcut) {
        return std::ranges::find(identifiers, shortcut.identifier) == identifiers.end();
      });
  _sessionShortcuts.assign(firstBound, refused.end());
  refused.erase(firstBound, refused.end());
  lose(refused);
  if (_sessionShortcuts.empty()) {
    closeSession();
  }
  update();
}

void PortalHotKeys::closeSession() {
  if (_session.empty()) {
    return;
  }
  const auto call = newCall(_bus, _session.c_str(), sessionInterface, "Close");
  if (call && sd_bus_message_set_expect_reply(call.get(), 0) >= 0) {
    sd_bus_send(_bus.connection(), call.get(), nullptr);
  }
  _closedSession = _session;
  forgetSession();
}

void PortalHotKeys::forgetSession() {
  _request.reset();
  _session.clear();
  _sessionShortcuts.clear();
}

void PortalHotKeys::lose(const Shortcuts& shortcuts) {
  for (const Shortcut& shortcut : shortcuts) {
    const auto binding = std::ranges::find(_bindings, shortcut, &Binding::shortcut);
    if (binding != _bindings.end()) {
      const HotKeyNumber number = binding->number;
      _bindings.erase(binding);
      _listener.hotKeyLost(number);
    }
  }
}

std::string PortalHotKeys::newToken() { return "quennel" + std::to_string(++_lastToken); }

/// The answer to a question that cannot even be asked is no.
void PortalHotKeys::ask(const BusMessage& call, const std::string& token,
                        void (PortalHotKeys::*take)(const Results& results)) {
  const auto answer = [this, take](const Results& results) {
    // The request is what calls, and has to live until this returns.
    const auto request = std::move(_request);
    (this->*take)(results);
  };
  _request = std::make_unique<PortalRequest>(_bus, token, answer);
  if (!call || !_request->send(call.get())) {
    _request.reset();
    (this->*take)(std::nullopt);
  }
}

void PortalHotKeys::takeActivated(sd_bus_message* message) {
  const char* session = nullptr;
  const char* identifier = nullptr;
  if (!sd_bus_message_has_signature(message, "osta{sv}") ||
      sd_bus_message_read(message, "os", &session, &identifier) <= 0 ||
      (session != _session && session != _closedSession)) {
    return;
  }
  const auto hasIdentifier = [&](const Binding& binding) {
    return binding.shortcut.identifier == identifier;
  };
  const auto binding = std::ranges::find_if(_bindings, hasIdentifier);
  if (binding != _bindings.end()) {
    _listener.hotKeyPressed(binding->number);
  }
}

/// The user or the desktop has ended the session.
void PortalHotKeys::takeClosed(sd_bus_message* message) {
  const char* const path = sd_bus_message_get_path(message);
  if (path && !_session.empty() && path == _session) {
    forgetSession();
    lose(wantedShortcuts());
  }
}

/// A session ends with its portal. One that had been granted is asked for again, of the portal that
/// is started for this; a portal that goes away over the question is not asked twice.
void PortalHotKeys::takeOwnerChanged(sd_bus_message* message) {
  const char* oldOwner = nullptr;
  if (sd_bus_message_skip(message, "s") < 0 || sd_bus_message_read(message, "s", &oldOwner) <= 0) {
    return;
  }
  if (*oldOwner == '\0') {
    return takeNewPortal();
  }
  const bool wasAsked = _request != nullptr;
  forgetSession();
  if (wasAsked) {
    return lose(wantedShortcuts());
  }
  introduceProgram();
  update();
  // What the last one refused, this one may give.
  const char* newOwner = nullptr;
  if (sd_bus_message_read(message, "s", &newOwner) > 0 && *newOwner != '\0') {
    _listener.desktopAppeared();
  }
}

/// One that a question of ours has started answers that question.
void PortalHotKeys::takeNewPortal() {
  if (!_request) {
    introduceProgram();
    _listener.desktopAppeared();
  }
}

void PortalHotKeys::takeDisconnected(sd_bus_message*) {
  forgetSession();
  lose(wantedShortcuts());
}

}  // namespace quennel
