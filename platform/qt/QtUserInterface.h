#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/UserInterface.h"

namespace quennel {

class QtApplication;
class RunLoop;

/// The user interface in Qt Widgets. The toolkit's application object lives only while something is
/// shown.
class QtUserInterface : public UserInterface {
 public:
  /// `runLoop` is not owned.
  explicit QtUserInterface(RunLoop& runLoop) : _runLoop(runLoop) {}

  int runModal(const Alert& alert) override;
  void activateIgnoringOtherApps() override;
  std::optional<std::string> localizedDescriptionOfFileExtension(
      const std::string& extension) override;

 private:
  /// The application object, shared by all that is shown at the same time; null with no display.
  std::shared_ptr<QtApplication> application();

  RunLoop& _runLoop;
  std::weak_ptr<QtApplication> _application;
};

}  // namespace quennel
