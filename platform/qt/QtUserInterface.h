#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/UserInterface.h"
#include "platform/qt/BegunPanels.h"

namespace quennel {

class QtApplication;
class RunLoop;

/// The user interface in Qt Widgets. The toolkit's application object lives only while something is
/// shown.
class QtUserInterface : public UserInterface {
 public:
  /// `runLoop` is not owned.
  explicit QtUserInterface(RunLoop& runLoop) : _runLoop(runLoop), _begunPanels(runLoop) {}

  int runModal(const Alert& alert) override;
  std::optional<std::string> runModalOpenPanel(const OpenPanel& panel) override;
  void beginOpenPanel(const OpenPanel& panel, const Choice& completion) override;
  std::unique_ptr<SavePanel> savePanel() override;
  void setActivationToken(const std::string& token) override { _activationToken = token; }
  void activateIgnoringOtherApps() override;
  std::optional<std::string> localizedDescriptionOfFileExtension(
      const std::string& extension) override;

 private:
  /// The application object, shared by all that is shown at the same time; null with no display.
  std::shared_ptr<QtApplication> application();
  void offerActivationToken();

  RunLoop& _runLoop;
  std::weak_ptr<QtApplication> _application;
  BegunPanels _begunPanels;
  std::string _activationToken;
};

}  // namespace quennel
