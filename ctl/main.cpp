#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "ctl/Autostart.h"
#include "ctl/BusHelperConnection.h"
#include "ctl/CommandLine.h"
#include "platform/linux/bundle/PrefixBundle.h"
#include "platform/linux/scope/LandlockSecurityScope.h"
#include "platform/linux/settings/PropertyListFile.h"
#include "platform/linux/settings/PropertyListUserDefaults.h"
#include "platform/values/Path.h"
#include "settings/SharedSettings.h"

namespace {

using namespace quennel;

/// What the settings say until somebody sets them.
PropertyList::Dictionary defaultSettings() {
  const PrefixBundle bundle;
  const auto path = bundle.pathForResource("Defaults", "plist");
  const auto defaults = path ? bundle.dictionaryWithContentsOfFile(*path) : std::nullopt;
  return defaults.value_or(PropertyList::Dictionary());
}

/// Unreadable settings read as empty; a person should know why.
void warnOfUnreadable(const std::string& path) {
  if (PropertyListFile::read(path).state == PropertyListFile::State::Unreadable) {
    std::cerr << "quennelctl: " << path
              << " is not a property list that can be read; it counts as empty\n";
  }
}

}  // namespace

int main(int count, char** words) {
  const std::vector<std::string> arguments(words + (count > 0 ? 1 : 0), words + count);
  const std::string path = PropertyListUserDefaults::pathForDomain(sharedSuiteName);
  warnOfUnreadable(path);
  PropertyListUserDefaults settings(path);
  settings.registerDefaults(defaultSettings());
  BusHelperConnection helper;
  LandlockSecurityScope scope;
  const Autostart autostart(
      appendingPathComponent(deletingLastPathComponent(path), "autostart"),
      appendingPathComponent(deletingLastPathComponent(PrefixBundle().executablePath()),
                             "quennelhelper"));
  CommandContext context{settings, helper, scope, autostart, std::cout, std::cerr};
  const int status = runCommandLine(arguments, context);
  if (!std::cout.flush()) {
    std::cerr << "quennelctl: the output cannot be written\n";
    return status == 0 ? 1 : status;
  }
  return status;
}
