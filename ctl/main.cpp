#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "ctl/CommandLine.h"
#include "manage/GrantedFolders.h"
#include "manage/Switches.h"
#include "manage/Templates.h"
#include "platform/linux/autostart/DesktopAutostart.h"
#include "platform/linux/bundle/PrefixBundle.h"
#include "platform/linux/files/PosixFileInspector.h"
#include "platform/linux/helper/BusHelperConnection.h"
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
  const PosixFileInspector files;
  DesktopAutostart autostart(
      appendingPathComponent(deletingLastPathComponent(path), "autostart"),
      appendingPathComponent(deletingLastPathComponent(PrefixBundle().executablePath()),
                             "quennelhelper"));
  Templates templates(settings, files, autostart, helper);
  Switches switches(settings);
  GrantedFolders grants(settings, scope, files, helper);
  CommandContext context{templates, switches, grants, helper, files, std::cout, std::cerr};
  const int status = runCommandLine(arguments, context);
  if (!std::cout.flush()) {
    std::cerr << "quennelctl: the output cannot be written\n";
    return status == 0 ? 1 : status;
  }
  return status;
}
