#pragma once

#include <cstddef>
#include <string>

#include "manage/BoundKeys.h"

namespace quennel {

/// The template's shortcut; "?" for one that is no key combination.
std::string shortcutShown(const FileTemplate& template_);

/// Why the shortcut of the template at `index` does not work; empty when it does.
std::string obstacleTo(std::size_t index, const BoundKeys& keys);

}  // namespace quennel
