#pragma once

#include <string>

namespace quennel {

class UserDefaults;

/// Keeps the folder as the one in which the next panel opens. The product keeps these two keys
/// wherever it runs; on this desktop they have no effect, because a panel is told its folder and
/// nobody reads them.
void rememberPanelFolder(UserDefaults& standardDefaults, const std::string& folder);

}  // namespace quennel
