#pragma once

#include <systemd/sd-bus.h>

#include <string>
#include <vector>

namespace quennel::test {

/// A shortcut as the interface of desktop portals has it.
struct PortalShortcut {
  std::string identifier;
  std::string description;
  /// "CTRL+ALT+n".
  std::string trigger;
};

/// The trigger for an accelerator text. Throws for a text that is none.
std::string portalTrigger(const std::string& accelerator);

/// Reads what is to be bound, an "a(sa{sv})".
std::vector<PortalShortcut> readPortalShortcuts(sd_bus_message* message);

/// Appends the results of binding, an "a{sv}". Throws when that fails.
void appendPortalResults(sd_bus_message* message, const std::vector<PortalShortcut>& bound);

/// Throws for a negative result.
void requireBus(int result, const char* what);

}  // namespace quennel::test
