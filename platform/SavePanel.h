#pragma once

#include <optional>
#include <string>
#include <vector>

namespace quennel {

class PopUpButton;

/// How a panel stands among the windows of all applications.
enum class PanelLevel { Normal = 0, AboveOthers = 1 };

/// How a panel ended; the numbers are those of the platform that the flows were written for.
/// Aborted is one that could not be shown.
enum class ModalResponse { Abort = -1001, Cancel = 0, OK = 1 };

/// A panel in which the user names a file that is to be made, and chooses its folder. Everything
/// but the level can be set while it is shown, too. Main thread only.
class SavePanel {
 public:
  virtual ~SavePanel() = default;

  virtual void setTitle(const std::string& title) = 0;

  /// Puts a proposal in the place of whatever name the user may have typed; it is shown selected.
  virtual void setNameFieldStringValue(const std::string& name) = 0;

  /// The name extensions that the file may have. A typed name that ends in none of them gets the
  /// first one appended. Nothing: the name is taken as it is typed.
  virtual void setAllowedFileTypes(const std::optional<std::vector<std::string>>& types) = 0;

  /// Whether the name field leaves out the extension that is appended.
  virtual void setExtensionHidden(bool hidden) = 0;

  /// The folder that is shown.
  virtual void setDirectoryURL(const std::string& path) = 0;
  virtual void setLevel(PanelLevel level) = 0;
  /// Whether the panel offers to make folders.
  virtual void setCanCreateDirectories(bool can) = 0;

  /// Puts a further control under the name field. Not owned; outlives the panel or `runModal`,
  /// whichever ends first.
  virtual void setAccessoryView(PopUpButton& view) = 0;

  /// Shows the panel until the user answers it, and serves the main queue meanwhile. The user has
  /// agreed to replace what exists at the path. Aborted when nothing can be shown, cancelled when
  /// the run loop terminates.
  virtual ModalResponse runModal() = 0;

  /// The path of the file, after the answer OK: absolute, with the extension.
  virtual std::string path() const = 0;
};

}  // namespace quennel
