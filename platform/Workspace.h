#pragma once

#include <string>
#include <vector>

namespace quennel {

/// The desktop around the helper: file managers and other applications. Main thread only; nothing
/// waits for another program.
class Workspace {
 public:
  virtual ~Workspace() = default;

  /// Shows the items selected in a window of the user's file manager; where none can select, opens
  /// the folder of the first one. Best effort, nothing is reported.
  virtual void activateFileViewerSelectingItems(const std::vector<std::string>& paths) = 0;

  /// Opens the file or folder at `path` with its default application. False when the opener could
  /// not even be started.
  virtual bool openFile(const std::string& path) = 0;
};

}  // namespace quennel
