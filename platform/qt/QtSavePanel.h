#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/SavePanel.h"
#include "platform/qt/SavePanelDialog.h"

namespace quennel {

/// The save panel in Qt Widgets: what it is to show, and the dialog while it is shown.
class QtSavePanel : public SavePanel {
 public:
  /// Calls what it is given, which shows something and returns when it has closed, where something
  /// can be shown; false where nothing can.
  using Presenter = std::function<bool(const std::function<void()>&)>;

  /// `bundle` is not owned and outlives the panel.
  QtSavePanel(Presenter present, const Bundle& bundle)
      : _present(std::move(present)), _bundle(bundle) {}

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
  Presenter _present;
  const Bundle& _bundle;
  SavePanelContents _contents;
  SavePanelDialog* _dialog = nullptr;
  std::string _path;
};

}  // namespace quennel
