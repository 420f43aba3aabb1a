#pragma once

#include <memory>
#include <optional>
#include <string>

#include "settings/FileTemplate.h"

namespace quennel {

class Alerts;
class AppUtil;
class Bundle;
class FileCreation;
class FileManager;
class PanelCount;
class ReplaceableTexts;
class SavePanel;
class SecurityScope;
class UserDefaults;
class UserInterface;

/// The panel in which the user names a new file. Main thread only; outlives the alerts that it
/// leads to.
class NewFilePanel {
 public:
  struct Services {
    FileManager& fileManager;
    SecurityScope& securityScope;
    UserInterface& userInterface;
    const UserDefaults& sharedDefaults;
    UserDefaults& standardDefaults;
    const Bundle& bundle;
    const AppUtil& util;
    const ReplaceableTexts& texts;
    const Alerts& alerts;
    const FileCreation& creation;
    PanelCount& panelCount;
  };
  explicit NewFilePanel(const Services& services) : _services(services) {}
  NewFilePanel(const NewFilePanel&) = delete;
  NewFilePanel& operator=(const NewFilePanel&) = delete;

  /// Lets the user name a new file, in `dir` or elsewhere, choose another template for it, and
  /// makes it; an item of that name is replaced. Returns when the panel has closed and the file is
  /// made. No directory shows no panel.
  void showNewFilePanel(const std::optional<std::string>& dir, const FileTemplate& template_) const;

 private:
  std::unique_ptr<SavePanel> newFilePanel(const std::string& dir,
                                          const FileTemplate& template_) const;
  void makeFileAtChosenPath(const std::string& path, const FileTemplate& template_) const;

  Services _services;
};

}  // namespace quennel
