#include "creation/FormatViewController.h"

#include <optional>
#include <utility>
#include <vector>

#include "access/ReplaceableTexts.h"
#include "creation/NameProposal.h"
#include "platform/Bundle.h"
#include "platform/SavePanel.h"
#include "platform/UserDefaults.h"
#include "platform/values/Text.h"
#include "settings/SharedSettings.h"

namespace quennel {

FormatViewController::FormatViewController(const UserDefaults& sharedDefaults, const Bundle& bundle,
                                           const AppUtil& util, FileTemplate selectedTemplate)
    : _sharedDefaults(sharedDefaults),
      _bundle(bundle),
      _util(util),
      _selectedTemplate(std::move(selectedTemplate)) {}

PopUpButton& FormatViewController::view() {
  if (!_isViewLoaded) {
    _isViewLoaded = true;
    _view.setLabel(_bundle.localizedStringForKey("&Template:"));
    _view.setAction([this] { didChangeTemplate(); });
    viewDidLoad();
  }
  return _view;
}

void FormatViewController::viewDidLoad() {
  const auto templates = _sharedDefaults.arrayForKey(fileTemplatesKey);
  _view.removeAllItems();
  for (const FileTemplate& template_ : templates.value_or(PropertyList::Array())) {
    const bool isSelected = template_ == _selectedTemplate;
    if (isSelected || templateFlag(template_, "enabled")) {
      addItem(template_);
    }
    if (isSelected) {
      _view.selectItemAtIndex(_view.items().size() - 1);
    }
  }
}

void FormatViewController::addItem(const FileTemplate& template_) {
  _view.addItem({.title = templateText(template_, "title"),
                 .image = {.fileType = templateText(template_, "suffix"), .size = 16},
                 .representedObject = template_});
}

void FormatViewController::didChangeTemplate() {
  const MenuItem* const item = _view.selectedItem();
  if (!item || !_savePanel || !_appDelegate) {
    return;
  }
  const FileTemplate& template_ = item->representedObject;
  const std::string suffix = templateText(template_, "suffix");
  const std::string name = proposedName(_util, _destDir, template_);
  _savePanel->setTitle(
      formatted(_appDelegate->localizedStringForKey("New %@"), templateText(template_, "title")));
  _savePanel->setNameFieldStringValue(name);
  _savePanel->setAllowedFileTypes(suffix.empty() ? std::nullopt
                                                 : std::optional(std::vector{suffix}));
  _savePanel->setExtensionHidden(!suffix.empty());
}

}  // namespace quennel
