#pragma once

#include <QtWidgets/QApplication>
#include <memory>
#include <optional>
#include <string>

class QSocketNotifier;

namespace quennel {

class RunLoop;

/// The toolkit's application object, and the bridge between its event loop and the main queue. It
/// exists only while something is shown: one that is left alone while the run loop waits would
/// collect the display's events without end.
///
/// A display that goes away under it ends the process, at once and without the shutdown of the run
/// loop: the toolkit knows no other way. So nothing may be pending when something is shown: what a
/// flow has to keep is on disk by then.
class QtApplication {
 public:
  /// Connects to the first of `platforms` (see Display.h) that works. `runLoop` is not owned.
  QtApplication(RunLoop& runLoop, std::string platforms);
  QtApplication(const QtApplication&) = delete;
  QtApplication& operator=(const QtApplication&) = delete;
  ~QtApplication();

  /// Brings what is shown to the front of all applications.
  void activate();

 private:
  void serveMainQueue();
  void installTranslations();

  RunLoop& _runLoop;
  // The toolkit keeps references to the arguments.
  std::string _platforms;
  char* _arguments[4];
  int _argumentCount = 3;
  std::optional<QApplication> _application;
  std::unique_ptr<QSocketNotifier> _mainQueueNotifier;
};

}  // namespace quennel
