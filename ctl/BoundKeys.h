#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "ctl/HelperConnection.h"
#include "settings/FileTemplate.h"

namespace quennel {

/// Whether the templates' keyboard shortcuts work, by the helper's word.
class BoundKeys {
 public:
  /// Asks the helper, which is started if needed.
  explicit BoundKeys(HelperConnection& helper);

  bool isBound(std::size_t index) const;
  /// Why the shortcut of the template at `index` does not work.
  std::string reason(std::size_t index) const;

 private:
  const HelperKey* find(std::size_t index) const;

  std::vector<HelperKey> _keys;
  /// Why the helper did not answer, if it did not.
  std::string _failure;
};

bool hasShortcut(const FileTemplate& template_);

/// The template's shortcut as people write it; "?" for one that is no key combination.
std::string shortcutText(const FileTemplate& template_);

}  // namespace quennel
