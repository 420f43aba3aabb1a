#include "platform/qt/QtSavePanel.h"

#include "platform/linux/ui/StandardErrorAlert.h"

namespace quennel {

void QtSavePanel::setTitle(const std::string& title) {
  _contents.title = title;
  if (_dialog) {
    _dialog->showTitle();
  }
}

void QtSavePanel::setNameFieldStringValue(const std::string& name) {
  _contents.name = name;
  if (_dialog) {
    _dialog->showName();
  }
}

void QtSavePanel::setAllowedFileTypes(const std::optional<std::vector<std::string>>& types) {
  _contents.fileTypes = types.value_or(std::vector<std::string>());
  if (_dialog) {
    _dialog->showExtension();
  }
}

void QtSavePanel::setExtensionHidden(bool hidden) {
  _contents.extensionHidden = hidden;
  if (_dialog) {
    _dialog->showExtension();
  }
}

void QtSavePanel::setDirectoryURL(const std::string& path) {
  _contents.directory = path;
  if (_dialog) {
    _dialog->showDirectory();
  }
}

void QtSavePanel::setCanCreateDirectories(bool can) {
  _contents.canCreateDirectories = can;
  if (_dialog) {
    _dialog->showNewFolderButton();
  }
}

ModalResponse QtSavePanel::runModal() {
  std::optional<std::string> path;
  const bool isShown = _present([&] {
    SavePanelDialog dialog(_contents, _bundle);
    _dialog = &dialog;
    path = dialog.run();
    _dialog = nullptr;
  });
  if (!isShown) {
    return runOnStandardError(_contents.title, _contents.directory);
  }
  _path = path.value_or("");
  return path ? ModalResponse::OK : ModalResponse::Cancel;
}

}  // namespace quennel
