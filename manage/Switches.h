#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "manage/Failure.h"
#include "platform/UserDefaults.h"
#include "settings/SharedSettings.h"

namespace quennel {

/// The settings that are on or off, for all templates.
class Switches {
 public:
  static constexpr std::array<std::string_view, 5> keys = {skipFilenameKey, showFileOnCreationKey,
                                                           playSoundKey, openFileOnCreationKey,
                                                           runInBackgroundKey};

  static bool isSwitch(std::string_view key);

  /// The settings are not owned.
  explicit Switches(UserDefaults& settings) : _settings(settings) {}

  bool isOn(std::string_view key) const { return _settings.boolForKey(key); }

  Result<void, Failure> set(const std::string& key, bool isOn);

  /// What the settings hold under any of their keys; the default where nothing was set.
  std::optional<PropertyList> valueOf(std::string_view key) const {
    return _settings.objectForKey(key);
  }

 private:
  UserDefaults& _settings;
};

}  // namespace quennel
