#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "platform/HelperConnection.h"
#include "settings/FileTemplate.h"

namespace quennel {

/// Whether the templates' keyboard shortcuts work, by the helper's word.
class BoundKeys {
 public:
  /// Asks the helper, which is started if needed.
  explicit BoundKeys(HelperConnection& helper);

  /// Why nothing is known of any key; nothing when the helper answered.
  const std::optional<HelperSilence>& silence() const { return _silence; }

  /// What the helper says of the key of the template at `index`; nothing when it has not read the
  /// template yet.
  const HelperKey* keyOf(std::size_t index) const;

 private:
  std::vector<HelperKey> _keys;
  std::optional<HelperSilence> _silence;
};

bool hasShortcut(const FileTemplate& template_);

/// The template's shortcut as people write it; nothing for one that is no key combination.
std::optional<std::string> shortcutText(const FileTemplate& template_);

}  // namespace quennel
