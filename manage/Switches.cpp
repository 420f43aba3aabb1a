#include "manage/Switches.h"

#include <algorithm>

namespace quennel {

bool Switches::isSwitch(std::string_view key) { return std::ranges::find(keys, key) != keys.end(); }

Result<void, Failure> Switches::set(const std::string& key, bool isOn) {
  Failure failure{.reason = Failure::Reason::SettingsNotStored};
  const auto value = [&](const auto&) { return std::optional<PropertyList>(isOn); };
  if (!_settings.updateObjectForKey(key, value, &failure.error)) {
    return failure;
  }
  return {};
}

}  // namespace quennel
