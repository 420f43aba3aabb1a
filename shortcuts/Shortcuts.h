#pragma once

#include <map>
#include <optional>
#include <string>

#include "platform/ActionTarget.h"
#include "platform/values/PropertyList.h"
#include "settings/FileTemplate.h"
#include "shortcuts/PressTurns.h"

namespace quennel {

class AppUtil;
class Bundle;
class FileCreation;
class FolderQuery;
class NewFilePanel;
class PTHotKeyCenter;
class RunLoop;
class ScriptInstaller;
class UserDefaults;

/// The system-wide keys of the templates, and the target of their actions. Main thread only;
/// outlives the keys that it binds and the work that it puts on the main queue.
class Shortcuts : public ActionTarget {
 public:
  struct Services {
    RunLoop& runLoop;
    PTHotKeyCenter& hotKeyCenter;
    const UserDefaults& sharedDefaults;
    const Bundle& bundle;
    const AppUtil& util;
    ScriptInstaller& installer;
    const FolderQuery& folderQuery;
    const FileCreation& creation;
    const NewFilePanel& newFilePanel;
  };
  explicit Shortcuts(const Services& services) : _services(services) {}
  Shortcuts(const Shortcuts&) = delete;
  Shortcuts& operator=(const Shortcuts&) = delete;

  /// Replaces all system-wide keys by one for every template that has a shortcut, disabled ones
  /// too. A key knows its template by its index alone.
  void bindHotKeys();
  /// The list of templates as it was last bound.
  const std::optional<PropertyList::Array>& templates() const { return _templates; }
  /// Called for the name of an action that is sent for the first time: gives it the handler that
  /// all shortcuts share, for good, if its name begins like theirs. Answers whether it has one.
  bool resolveInstanceMethod(const std::string& name);
  void performAction(const std::string& name, const PTHotKey& sender) override;

 private:
  using Action = void (Shortcuts::*)(const std::string& name, const PTHotKey& sender);

  void shortcutAction(const std::string& name, const PTHotKey& sender);
  void servePress(const std::string& name);
  void makeFile(const std::string& dir, const FileTemplate& template_, bool skipFilename,
                PressTurn& turn);

  Services _services;
  std::optional<PropertyList::Array> _templates;
  /// The actions that have been resolved, by name.
  std::map<std::string, Action> _actions;
  PressTurns _turns;
};

}  // namespace quennel
