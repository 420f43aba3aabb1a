#pragma once

#include "platform/SavePanel.h"
#include "platform/linux/ui/StandardErrorAlert.h"

namespace quennel {

/// A save panel where nothing can be shown: it writes "title (folder)" to standard error and is
/// aborted at once.
class DismissedSavePanel : public SavePanel {
 public:
  void setTitle(const std::string& title) override { _title = title; }
  void setNameFieldStringValue(const std::string&) override {}
  void setAllowedFileTypes(const std::optional<std::vector<std::string>>&) override {}
  void setExtensionHidden(bool) override {}
  void setDirectoryURL(const std::string& path) override { _directory = path; }
  void setLevel(PanelLevel) override {}
  void setCanCreateDirectories(bool) override {}
  void setAccessoryView(PopUpButton&) override {}
  ModalResponse runModal() override { return runOnStandardError(_title, _directory); }
  std::string path() const override { return {}; }

 private:
  std::string _title;
  std::string _directory;
};

}  // namespace quennel
