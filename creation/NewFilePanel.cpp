#include "creation/NewFilePanel.h"

#include <vector>

#include "access/Alerts.h"
#include "access/PanelFolder.h"
#include "access/ReplaceableTexts.h"
#include "creation/FileCreation.h"
#include "creation/FormatViewController.h"
#include "creation/NameProposal.h"
#include "creation/PanelCount.h"
#include "platform/Bundle.h"
#include "platform/FileManager.h"
#include "platform/SavePanel.h"
#include "platform/SecurityScope.h"
#include "platform/UserInterface.h"
#include "platform/values/Path.h"
#include "platform/values/Text.h"

namespace quennel {

namespace {

/// Whether to remove the item would remove the template.
bool holdsTemplate(const std::string& path, const FileTemplate& template_) {
  const std::string item = standardizingPath(path);
  const std::string file = standardizingPath(templateText(template_, "filePath"));
  return file == item || file.starts_with(item + "/");
}

}  // namespace

void NewFilePanel::showNewFilePanel(const std::optional<std::string>& dir,
                                    const FileTemplate& template_) const {
  if (!dir) {
    return;
  }
  _services.panelCount.raise();
  rememberPanelFolder(_services.standardDefaults, *dir);
  _services.userInterface.activateIgnoringOtherApps();
  const auto panel = newFilePanel(*dir, template_);
  FormatViewController chooser(_services.sharedDefaults, _services.bundle, _services.util,
                               template_);
  chooser.setAppDelegate(&_services.texts);
  chooser.setSavePanel(panel.get());
  chooser.setDestDir(*dir);
  panel->setAccessoryView(chooser.view());
  _services.userInterface.activateIgnoringOtherApps();
  if (panel->runModal() != ModalResponse::OK) {
    // The count stays raised: after a cancelled panel the helper does not leave by itself.
    return;
  }
  const MenuItem* const item = chooser.formatButton()->selectedItem();
  makeFileAtChosenPath(panel->path(), item ? item->representedObject : template_);
}

std::unique_ptr<SavePanel> NewFilePanel::newFilePanel(const std::string& dir,
                                                      const FileTemplate& template_) const {
  const std::string suffix = templateText(template_, "suffix");
  const std::string name = proposedName(_services.util, dir, template_);
  auto panel = _services.userInterface.savePanel();
  panel->setTitle(
      formatted(_services.texts.localizedStringForKey("New %@"), templateText(template_, "title")));
  panel->setNameFieldStringValue(name);
  if (!suffix.empty()) {
    panel->setAllowedFileTypes(std::vector{suffix});
    panel->setExtensionHidden(true);
  }
  panel->setDirectoryURL(dir);
  panel->setLevel(PanelLevel::AboveOthers);
  panel->setCanCreateDirectories(true);
  return panel;
}

void NewFilePanel::makeFileAtChosenPath(const std::string& path,
                                        const FileTemplate& template_) const {
  // The user's choice in the panel is what allows this one file; nothing is recorded.
  _services.securityScope.allowForThisRun(path, SecurityScope::Extent::Item);
  Error error;
  FileManager& files = _services.fileManager;
  // A template that is to replace itself stays, and the copy fails because something is there.
  if (files.fileExistsAtPath(path) && !holdsTemplate(path, template_) &&
      !files.removeItemAtPath(path, &error)) {
    // The count stays raised here, too.
    _services.alerts.showAfterPanel(
        _services.bundle.localizedStringForKey("Error removing existing file!"),
        error.localizedDescription);
    return;
  }
  if (!files.copyItemAtPath(templateText(template_, "filePath"), path, &error)) {
    _services.creation.reportFailure(error.localizedDescription,
                                     [this] { _services.panelCount.lower(); });
    return;
  }
  _services.creation.finishNewItem(path, template_);
  _services.panelCount.lower();
}

}  // namespace quennel
