#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quennel {

/// The desktop around the helper: file managers and other applications. Main thread only, where an
/// operation does not say otherwise; nothing waits for another program.
class Workspace {
 public:
  virtual ~Workspace() = default;

  /// Shows the items selected in a window of the user's file manager; where none can select, opens
  /// the folder of the first one. Best effort, nothing is reported.
  virtual void activateFileViewerSelectingItems(const std::vector<std::string>& paths) = 0;

  /// Opens the file or folder at `path` with its default application. False when the opener could
  /// not even be started.
  virtual bool openFile(const std::string& path) = 0;

  /// Tells the file manager that the item at `path` changed. Any thread. The file managers of this
  /// desktop watch for themselves, so there is nobody to tell.
  virtual void noteFileSystemChanged(std::string_view path) { static_cast<void>(path); }
};

}  // namespace quennel
