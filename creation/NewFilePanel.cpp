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
#include "platform/values/Text.h"

namespace quennel {

namespace {

using Replacement = FileManager::Replacement;

/// The user has agreed to replace what is at the path.
Replacement putCopyAt(FileManager& files, const std::string& path, const std::string& source,
                      Error* error) {
  if (files.fileExistsAtPath(path)) {
    return files.replaceItemAtPath(path, source, error);
  }
  return files.copyItemAtPath(source, path, error) ? Replacement::Done : Replacement::NotCopied;
}

}  // namespace

void NewFilePanel::showNewFilePanel(const std::optional<std::string>& dir,
                                    const FileTemplate& template_) const {
  if (!dir || _services.creation.refusesForLength(*dir)) {
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
  const ModalResponse response = panel->runModal();
  if (response == ModalResponse::Abort) {
    _services.panelCount.lower();
    return;
  }
  if (response != ModalResponse::OK) {
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
  switch (putCopyAt(_services.fileManager, path, templateText(template_, "filePath"), &error)) {
    case Replacement::NotSetAside:
      // The count stays raised here, too.
      _services.alerts.showAfterPanel(
          _services.bundle.localizedStringForKey("Error removing existing file!"),
          error.localizedDescription(_services.bundle));
      return;
    case Replacement::NotCopied:
      _services.creation.reportFailure(error.localizedDescription(_services.bundle),
                                       [this] { _services.panelCount.lower(); });
      return;
    case Replacement::Done:
      _services.creation.finishNewItem(path, template_);
      _services.panelCount.lower();
  }
}

}  // namespace quennel
