#include "access/PanelFolder.h"

#include "platform/UserDefaults.h"

namespace quennel {

void rememberPanelFolder(UserDefaults& standardDefaults, const std::string& folder) {
  standardDefaults.setObject(folder, "NSNavLastRootDirectory");
  standardDefaults.setObject(folder, "NSNavLastCurrentDirectory");
  standardDefaults.synchronize();
}

}  // namespace quennel
