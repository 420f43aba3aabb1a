#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/UserInterface.h"

namespace quennel {

class Bundle;
class RunLoop;

/// The user interface of a program that seldom needs one: the toolkit comes with a module that is
/// loaded at the first use and stays loaded. Where the module is missing, alerts and the
/// texts of panels, which are dismissed, go to standard error, after one note that says so, and no
/// file type has a description.
class LazyUserInterface : public UserInterface {
 public:
  /// `runLoop` and `bundle`, where texts come from, are not owned. Nothing is loaded yet.
  LazyUserInterface(RunLoop& runLoop, const Bundle& bundle, std::string modulePath);
  ~LazyUserInterface() override;

  int runModal(const Alert& alert) override;
  std::optional<std::string> runModalOpenPanel(const OpenPanel& panel) override;
  void beginOpenPanel(const OpenPanel& panel, const Choice& completion) override;
  std::unique_ptr<SavePanel> savePanel() override;
  Windowing* windowing() override;
  void setActivationToken(const std::string& token) override;
  /// Brings to the front what is shown now. What is shown later comes to the front by itself, so
  /// that nothing is loaded for this.
  void activateIgnoringOtherApps() override;
  std::optional<std::string> localizedDescriptionOfFileExtension(
      const std::string& extension) override;

 private:
  /// The interface of the module, or null where it cannot be loaded.
  UserInterface* loaded();
  std::unique_ptr<UserInterface> load() const;

  RunLoop& _runLoop;
  const Bundle& _bundle;
  std::string _modulePath;
  std::string _activationToken;
  bool _loadingTried = false;
  std::unique_ptr<UserInterface> _userInterface;
};

}  // namespace quennel
