#pragma once

#include <optional>
#include <string>

#include "platform/Bundle.h"

namespace quennel {

/// The bundle as a tree below a prefix, installed or built: the executable in `bin`, resources in
/// `share/quennelhelper`, translations in `share/locale`. Everything is found from the place of the
/// executable, so the tree can be moved as a whole.
class PrefixBundle : public Bundle {
 public:
  /// The bundle of the running program; where /proc is missing, as if it stood at the root.
  PrefixBundle();
  /// The bundle of the program at `executablePath`, an absolute path.
  explicit PrefixBundle(std::string executablePath);

  std::optional<std::string> pathForResource(const std::string& name,
                                             const std::string& type) const override;
  std::optional<PropertyList::Dictionary> dictionaryWithContentsOfFile(
      const std::string& path) const override;

  /// Loads the user's language at the first call; not to be used for what no user sees.
  std::string localizedStringForKey(const std::string& key) const override;

  std::string executablePath() const override { return _executablePath; }
  std::string bundleIdentifier() const override { return "net.brellow.QuennelHelper"; }

  /// The absolute path of the user-interface module, whether it is there or not.
  std::string userInterfaceModulePath() const;
  /// The same of the module that binds keys on X11.
  std::string hotKeyModulePath() const;

 private:
  std::string _executablePath;
  std::string _prefix;
};

}  // namespace quennel
