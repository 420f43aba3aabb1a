#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/UserInterface.h"
#include "platform/qt/BegunPanels.h"
#include "platform/qt/QtWindowing.h"

namespace quennel {

class Bundle;
class QtApplication;
class RunLoop;

/// The user interface in Qt Widgets. The toolkit's application object lives only while something is
/// shown.
class QtUserInterface : public UserInterface {
 public:
  /// Neither is owned.
  QtUserInterface(RunLoop& runLoop, const Bundle& bundle)
      : _runLoop(runLoop),
        _bundle(bundle),
        _begunPanels(runLoop),
        _windowing(runLoop, bundle, [this] { return application(); }) {}

  int runModal(const Alert& alert) override;
  std::optional<std::string> runModalOpenPanel(const OpenPanel& panel) override;
  void beginOpenPanel(const OpenPanel& panel, const Choice& completion) override;
  std::unique_ptr<SavePanel> savePanel() override;
  Windowing* windowing() override { return &_windowing; }
  void setActivationToken(const std::string& token) override { _activationToken = token; }
  void activateIgnoringOtherApps() override;
  std::optional<std::string> localizedDescriptionOfFileExtension(
      const std::string& extension) override;

  /// Calls `modal`, which shows something and returns when it has closed, while the application
  /// object is there; does not when the run loop terminates. False when nothing can be shown.
  bool present(const std::function<void()>& modal);

 private:
  /// The application object, shared by all that is shown at the same time; null with no display.
  std::shared_ptr<QtApplication> application();
  void offerActivationToken();

  RunLoop& _runLoop;
  const Bundle& _bundle;
  std::weak_ptr<QtApplication> _application;
  BegunPanels _begunPanels;
  QtWindowing _windowing;
  std::string _activationToken;
};

}  // namespace quennel
