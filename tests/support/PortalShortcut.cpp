#include "tests/support/PortalShortcut.h"

#include <stdexcept>

#include "platform/keys/KeyCombination.h"
#include "platform/linux/bus/BusPropertyList.h"

namespace quennel::test {
namespace {

std::string textIn(const PropertyList& dictionary, const char* key) {
  const auto* const entry = dictionary.objectForKey(key);
  return entry && entry->string() ? *entry->string() : std::string();
}

}  // namespace

void requireBus(int result, const char* what) {
  if (result < 0) {
    throw std::runtime_error(std::string("portal: ") + what);
  }
}

std::string portalTrigger(const std::string& accelerator) {
  const auto combination = KeyCombination::fromAccelerator(accelerator).value();
  std::string trigger;
  trigger += combination.modifiers & KeyCombination::control ? "CTRL+" : "";
  trigger += combination.modifiers & KeyCombination::alt ? "ALT+" : "";
  trigger += combination.modifiers & KeyCombination::shift ? "SHIFT+" : "";
  trigger += combination.modifiers & KeyCombination::super ? "LOGO+" : "";
  return trigger + combination.key;
}

std::vector<PortalShortcut> readPortalShortcuts(sd_bus_message* message) {
  std::vector<PortalShortcut> shortcuts;
  const auto list = readPropertyList(message);
  for (const PropertyList& entry : *list.value().array()) {
    const auto& parts = *entry.array();
    shortcuts.push_back({*parts.at(0).string(), textIn(parts.at(1), "description"),
                         textIn(parts.at(1), "preferred_trigger")});
  }
  return shortcuts;
}

void appendPortalResults(sd_bus_message* message, const std::vector<PortalShortcut>& bound) {
  requireBus(sd_bus_message_open_container(message, 'a', "{sv}"), "results");
  requireBus(sd_bus_message_open_container(message, 'e', "sv"), "results");
  requireBus(sd_bus_message_append(message, "s", "shortcuts"), "results");
  requireBus(sd_bus_message_open_container(message, 'v', "a(sa{sv})"), "results");
  requireBus(sd_bus_message_open_container(message, 'a', "(sa{sv})"), "results");
  for (const PortalShortcut& shortcut : bound) {
    const std::string triggerDescription = "Press " + shortcut.trigger;
    requireBus(sd_bus_message_append(message, "(sa{sv})", shortcut.identifier.c_str(), 2,
                                     "description", "s", shortcut.description.c_str(),
                                     "trigger_description", "s", triggerDescription.c_str()),
               "shortcut");
  }
  for (int depth = 0; depth < 4; ++depth) {
    requireBus(sd_bus_message_close_container(message), "results");
  }
}

}  // namespace quennel::test
