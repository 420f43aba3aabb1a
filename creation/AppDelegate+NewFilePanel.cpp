#include <utility>
#include <vector>

#include "access/PanelFolder.h"
#include "app/AppDelegate.h"
#include "creation/FormatViewController.h"
#include "creation/NameProposal.h"
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

void AppDelegate::showNewFilePanel(const std::optional<std::string>& dir,
                                   const FileTemplate& template_) {
  if (!dir) {
    return;
  }
  setPanelCount(panelCount() + 1);
  rememberPanelFolder(_platform.standardDefaults, *dir);
  _platform.userInterface.activateIgnoringOtherApps();
  const auto panel = newFilePanel(*dir, template_);
  FormatViewController chooser(sharedDefaults(), _platform.mainBundle, _util, template_);
  chooser.setAppDelegate(&_texts);
  chooser.setSavePanel(panel.get());
  chooser.setDestDir(*dir);
  panel->setAccessoryView(chooser.view());
  _platform.userInterface.activateIgnoringOtherApps();
  if (panel->runModal() != ModalResponse::OK) {
    // The count stays raised: after a cancelled panel the helper does not leave by itself.
    return;
  }
  const MenuItem* const item = chooser.formatButton()->selectedItem();
  makeFileAtChosenPath(panel->path(), item ? item->representedObject : template_);
}

std::unique_ptr<SavePanel> AppDelegate::newFilePanel(const std::string& dir,
                                                     const FileTemplate& template_) const {
  const std::string suffix = templateText(template_, "suffix");
  const std::string name = proposedName(_util, dir, template_);
  auto panel = _platform.userInterface.savePanel();
  panel->setTitle(formatted(localizedStringForKey("New %@"), templateText(template_, "title")));
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

void AppDelegate::makeFileAtChosenPath(const std::string& path, const FileTemplate& template_) {
  // The user's choice in the panel is what allows this one file; nothing is recorded.
  _platform.securityScope.allowForThisRun(path, SecurityScope::Extent::Item);
  Error error;
  FileManager& files = _platform.fileManager;
  // A template that is to replace itself stays, and the copy fails because something is there.
  if (files.fileExistsAtPath(path) && !holdsTemplate(path, template_) &&
      !files.removeItemAtPath(path, &error)) {
    // The count stays raised here, too.
    _alerts.showAfterPanel(localizedText("Error removing existing file!"),
                           error.localizedDescription);
    return;
  }
  if (!files.copyItemAtPath(templateText(template_, "filePath"), path, &error)) {
    _alerts.showAfterPanel(localizedText("Error creating file!"), error.localizedDescription,
                           [this] { setPanelCount(panelCount() - 1); });
    return;
  }
  finishNewItem(path, template_);
  setPanelCount(panelCount() - 1);
}

}  // namespace quennel
