#pragma once

#include <optional>
#include <string>

#include "platform/values/PropertyList.h"

namespace quennel {

/// The installed program as a whole: its resources, its texts, its executable. Main thread only,
/// except for the texts.
class Bundle {
 public:
  virtual ~Bundle() = default;

  /// The absolute path of the resource `name`.`type`, or nothing when there is no such file.
  virtual std::optional<std::string> pathForResource(const std::string& name,
                                                     const std::string& type) const = 0;

  /// The dictionary held by the property list at `path`, or nothing when it cannot be read as one.
  virtual std::optional<PropertyList::Dictionary> dictionaryWithContentsOfFile(
      const std::string& path) const = 0;

  /// The translation of an English text into the user's language, else the text itself. May be
  /// called from any thread.
  virtual std::string localizedStringForKey(const std::string& key) const = 0;

  /// Absolute path of the running executable.
  virtual std::string executablePath() const = 0;

  /// "net.brellow.QuennelHelper".
  virtual std::string bundleIdentifier() const = 0;
};

}  // namespace quennel
