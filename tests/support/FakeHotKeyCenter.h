#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/PTHotKeyCenter.h"
#include "platform/RunLoop.h"
#include "platform/keys/KeyCombination.h"

namespace quennel::test {

/// Hot keys on a desktop of the test's own, where the test presses the keys.
class FakeHotKeyCenter : public PTHotKeyCenter {
 public:
  explicit FakeHotKeyCenter(RunLoop& runLoop) : _runLoop(runLoop) {}

  /// Whether the desktop has system-wide keys at all.
  bool isAvailable = true;

  /// What happens during each `registerHotKey`.
  std::function<void()> whileRegistering;

  /// The user presses the combination: what it sends is queued. A text that is no accelerator is a
  /// mistake in the test and throws.
  void press(const std::string& accelerator);

  /// Another program takes the combination.
  void holdByAnotherProgram(const std::string& accelerator);

  /// The desktop ends while the keys are registered.
  void endDesktop();
  /// There is one again.
  void startDesktop();

  HotKeys allHotKeys() const override { return *_hotKeys; }
  bool registerHotKey(std::shared_ptr<const PTHotKey> hotKey, Error* error = nullptr) override;
  void unregisterHotKey(const std::shared_ptr<const PTHotKey>& hotKey) override;
  [[nodiscard]] std::unique_ptr<Registration> addObserver(Handler keysMayBeHad,
                                                          Handler keysLeft) override;

 private:
  struct Observer {
    Handler keysMayBeHad;
    Handler keysLeft;
  };
  class ObserverRegistration;

  void tellObservers(Handler Observer::*handler);
  std::shared_ptr<const PTHotKey> hotKeyFor(const KeyCombination& combination) const;

  RunLoop& _runLoop;
  std::shared_ptr<HotKeys> _hotKeys = std::make_shared<HotKeys>();
  std::vector<KeyCombination> _heldByOthers;
  std::vector<std::weak_ptr<const Observer>> _observers;
};

}  // namespace quennel::test
