#pragma once

#include <deque>

#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TemporaryDirectory.h"

namespace quennel::test {

/// While it lives, the environment is that of an English-speaking user without settings, a session
/// bus or a display.
class FreshSession {
 public:
  FreshSession() {
    for (const char* const name :
         {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR"}) {
      _variables.emplace_back(name, _home.path());
    }
    for (const char* const name :
         {"DISPLAY", "WAYLAND_DISPLAY", "WAYLAND_SOCKET", "XDG_SESSION_TYPE", "XDG_CURRENT_DESKTOP",
          "QT_QPA_PLATFORM", "QT_QPA_PLATFORMTHEME", "QT_STYLE_OVERRIDE", "LANGUAGE"}) {
      _variables.emplace_back(name, std::nullopt);
    }
    _variables.emplace_back("LC_ALL", "C.UTF-8");
    _variables.emplace_back("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + (_home / "no-bus"));
  }

  const TemporaryDirectory& home() const { return _home; }

 private:
  TemporaryDirectory _home;
  std::deque<EnvironmentVariable> _variables;
};

}  // namespace quennel::test
