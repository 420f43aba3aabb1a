#pragma once

#include <string>
#include <utility>

#include "platform/PopUpButton.h"
#include "settings/FileTemplate.h"

namespace quennel {

class AppUtil;
class Bundle;
class ReplaceableTexts;
class SavePanel;
class UserDefaults;

/// The controller of the accessory view of the panel that names a new file: a pop-up button of the
/// templates, with which the user changes to another template. One per panel; main thread only.
class FormatViewController {
 public:
  FormatViewController(const UserDefaults& sharedDefaults, const Bundle& bundle,
                       const AppUtil& util, FileTemplate selectedTemplate);
  FormatViewController(const FormatViewController&) = delete;
  FormatViewController& operator=(const FormatViewController&) = delete;

  /// The template that was asked for. Never changed here: the user's choice is the selected item of
  /// the button.
  const FileTemplate& selectedTemplate() const { return _selectedTemplate; }
  void setSelectedTemplate(FileTemplate template_) { _selectedTemplate = std::move(template_); }

  /// The folder that was asked for, in which proposed names are free.
  const std::string& destDir() const { return _destDir; }
  void setDestDir(std::string dir) { _destDir = std::move(dir); }

  /// Where the texts come from, and the panel that this is the accessory of. Not owned. Both are
  /// set before the view is asked for, and outlive it.
  const ReplaceableTexts* appDelegate() const { return _appDelegate; }
  void setAppDelegate(const ReplaceableTexts* texts) { _appDelegate = texts; }
  SavePanel* savePanel() const { return _savePanel; }
  void setSavePanel(SavePanel* panel) { _savePanel = panel; }

  /// The view, which is all button. It is loaded when it is first asked for.
  PopUpButton& view();
  /// The button of the view; null before that is loaded.
  PopUpButton* formatButton() { return _isViewLoaded ? &_view : nullptr; }

  /// Fills the button: the enabled templates and the one that was asked for, in the user's order.
  void viewDidLoad();
  /// Makes the panel's title, name and file type those of the template that is selected now.
  void didChangeTemplate();

 private:
  void addItem(const FileTemplate& template_);

  const UserDefaults& _sharedDefaults;
  const Bundle& _bundle;
  const AppUtil& _util;
  FileTemplate _selectedTemplate;
  std::string _destDir;
  const ReplaceableTexts* _appDelegate = nullptr;
  SavePanel* _savePanel = nullptr;
  PopUpButton _view;
  bool _isViewLoaded = false;
};

}  // namespace quennel
