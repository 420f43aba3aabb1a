#pragma once

#include <functional>
#include <string>

namespace quennel {

class Alerts;
class AuthorizedDirectories;
class Bundle;
class FileManager;
class ReplaceableTexts;
class SecurityScope;
class UserDefaults;
class UserInterface;

/// The panel in which the user grants a directory where nothing may be changed yet. Main thread
/// only; outlives the panels that it shows.
class AuthorizationPanel {
 public:
  struct Services {
    FileManager& fileManager;
    SecurityScope& securityScope;
    UserInterface& userInterface;
    UserDefaults& standardDefaults;
    const Bundle& bundle;
    const ReplaceableTexts& texts;
    const Alerts& alerts;
    AuthorizedDirectories& directories;
  };
  explicit AuthorizationPanel(const Services& services) : _services(services) {}
  AuthorizationPanel(const AuthorizationPanel&) = delete;
  AuthorizationPanel& operator=(const AuthorizationPanel&) = delete;

  /// Shows the panel and returns. When the user has chosen `dir` or a folder that it is in, that is
  /// allowed for this run and recorded, and `whenAuthorized` is called; another choice is refused
  /// with an alert.
  void askFor(const std::string& dir, const std::function<void()>& whenAuthorized) const;

 private:
  std::string startFolder(const std::string& dir) const;
  void accept(const std::string& chosen, const std::string& dir,
              const std::function<void()>& whenAuthorized) const;

  Services _services;
};

}  // namespace quennel
