#pragma once

#include <functional>
#include <optional>
#include <string>

#include "settings/FileTemplate.h"

namespace quennel {

class Alerts;
class AppUtil;
class AuthorizationPanel;
class Bundle;
class FileManager;
class SecurityScope;
class Sound;
class UserDefaults;
class Workspace;

/// Makes new files from templates without a dialog that asks for the name. Main thread only;
/// outlives the panels and alerts that it leads to.
class FileCreation {
 public:
  struct Services {
    FileManager& fileManager;
    SecurityScope& securityScope;
    Workspace& workspace;
    Sound& sound;
    const UserDefaults& sharedDefaults;
    const Bundle& bundle;
    const AppUtil& util;
    const Alerts& alerts;
    const AuthorizationPanel& authorizationPanel;
  };
  explicit FileCreation(const Services& services) : _services(services) {}
  FileCreation(const FileCreation&) = delete;
  FileCreation& operator=(const FileCreation&) = delete;

  /// Makes a file from the template in `dir`. Where nothing may be changed there yet, returns once
  /// a panel is shown in which the user may authorize `dir` or a folder that it is in, and makes
  /// the file when that has happened.
  void createFileAtDir(const std::optional<std::string>& dir, const FileTemplate& template_) const;
  /// The same without asking for anything.
  void makeFileAtDir(const std::string& dir, const FileTemplate& template_) const;
  /// Whether `path` is the Desktop folder or an item directly in it.
  bool isDesktopDir(const std::string& path) const;

  /// What follows the copy of a template: the execute bits, the date, and what the settings say is
  /// done with a new file.
  void finishNewItem(const std::string& path, const FileTemplate& template_) const;
  /// Tells the user, if the path is longer than any folder's can be, and answers whether it is:
  /// nothing is then to be looked for on the way to it, which would take as long as the sender
  /// likes.
  bool refusesForLength(const std::string& dir) const;
  /// Tells the user that no file was made. Returns at once; `afterwards`, if any, is called when
  /// the user has dismissed the alert.
  void reportFailure(const std::string& reason,
                     const std::function<void()>& afterwards = nullptr) const;

 private:
  void makeFileInFolder(const std::string& dir, const FileTemplate& template_) const;
  void runPostCreationActions(const std::string& path) const;

  Services _services;
};

}  // namespace quennel
