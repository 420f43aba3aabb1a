#pragma once

#include <string>

namespace quennel {

class Bundle;
class UserDefaults;

/// The few texts that the main application may replace, through the setting `localizedStrings`.
class ReplaceableTexts {
 public:
  ReplaceableTexts(const Bundle& bundle, const UserDefaults& sharedDefaults)
      : _bundle(bundle), _sharedDefaults(sharedDefaults) {}

  /// The replacement, else the text in the user's language. `key` is the English text.
  std::string localizedStringForKey(const std::string& key) const;

 private:
  const Bundle& _bundle;
  const UserDefaults& _sharedDefaults;
};

}  // namespace quennel
