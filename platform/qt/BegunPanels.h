#pragma once

#include <list>
#include <memory>

#include "platform/UserInterface.h"

class QEventLoop;

namespace quennel {

class QtApplication;
class RunLoop;

/// The panels that stand on screen while nobody waits for them. The toolkit needs its own event
/// loop meanwhile: that of something modal, or else one that takes the place of the run loop, as
/// work of the main queue, until the last of the panels has closed.
class BegunPanels {
 public:
  /// `runLoop` is not owned.
  explicit BegunPanels(RunLoop& runLoop) : _runLoop(runLoop) {}
  ~BegunPanels();

  /// Shows the panel. `completion` is queued when it closes.
  void begin(const std::shared_ptr<QtApplication>& application, const OpenPanel& panel,
             const UserInterface::Choice& completion);

  /// To be called when something modal has gone: the panels that were begun while it was there have
  /// lost the loop that served them.
  void serve();

 private:
  struct Begun;

  void run();
  void finish(const std::shared_ptr<Begun>& begun);

  RunLoop& _runLoop;
  std::list<std::shared_ptr<Begun>> _panels;
  /// Those that have closed, kept until no event loop is left inside of which their signals, and
  /// the application object's, may still be under way.
  std::list<std::shared_ptr<Begun>> _closed;
  QEventLoop* _loop = nullptr;
};

}  // namespace quennel
