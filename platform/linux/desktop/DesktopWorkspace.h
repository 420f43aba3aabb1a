#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/Workspace.h"
#include "platform/linux/bus/SessionBus.h"
#include "platform/linux/processes/ProgramLauncher.h"

namespace quennel {

/// Reveals through `org.freedesktop.FileManager1` of whatever file manager the session has, and
/// opens with xdg-open.
class DesktopWorkspace final : public Workspace {
 public:
  /// Neither is owned; both outlive this object.
  DesktopWorkspace(EventRunLoop& runLoop, SessionBus& bus);
  ~DesktopWorkspace() override;

  void activateFileViewerSelectingItems(const std::vector<std::string>& paths) override;
  bool openFile(const std::string& path) override;

 private:
  class Reveal;

  SessionBus& _bus;
  ProgramLauncher _launcher;
  std::vector<std::unique_ptr<Reveal>> _reveals;
};

}  // namespace quennel
