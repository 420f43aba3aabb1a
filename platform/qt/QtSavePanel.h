#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/SavePanel.h"
#include "platform/qt/SavePanelDialog.h"

namespace quennel {

class QtUserInterface;

/// The save panel in Qt Widgets: what it is to show, and the dialog while it is shown.
class QtSavePanel : public SavePanel {
 public:
  /// Neither is owned; both outlive the panel.
  QtSavePanel(QtUserInterface& userInterface, const Bundle& bundle)
      : _userInterface(userInterface), _bundle(bundle) {}

  void setTitle(const std::string& title) override;
  void setNameFieldStringValue(const std::string& name) override;
  void setAllowedFileTypes(const std::optional<std::vector<std::string>>& types) override;
  void setExtensionHidden(bool hidden) override;
  void setDirectoryURL(const std::string& path) override;
  void setLevel(PanelLevel level) override { _contents.level = level; }
  void setCanCreateDirectories(bool can) override;
  void setAccessoryView(PopUpButton& view) override { _contents.accessory = &view; }
  ModalResponse runModal() override;
  std::string path() const override { return _path; }

 private:
  QtUserInterface& _userInterface;
  const Bundle& _bundle;
  SavePanelContents _contents;
  SavePanelDialog* _dialog = nullptr;
  std::string _path;
};

}  // namespace quennel
