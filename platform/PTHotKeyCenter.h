#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "platform/Error.h"
#include "platform/PTHotKey.h"
#include "platform/Registration.h"

namespace quennel {

/// The system-wide keys of this process. Main thread only.
///
/// Every press of a registered key's combination, however long it is held, sends the key's action
/// once, from the main queue. A key that is unregistered, or whose center is gone, by the time its
/// turn in the queue comes sends nothing.
class PTHotKeyCenter {
 public:
  using HotKeys = std::vector<std::shared_ptr<const PTHotKey>>;
  using Handler = std::function<void()>;

  virtual ~PTHotKeyCenter() = default;

  /// The keys that are registered now, in the order of their registration; a snapshot. A key that
  /// was refused is not among them, and one that stops working (the desktop's service for keys has
  /// gone, or has turned the key down after the user was asked) leaves.
  virtual HotKeys allHotKeys() const = 0;

  /// Registers the key and keeps it until `unregisterHotKey`. False when it is refused: its
  /// `keyCombo` says no combination, someone else (or another key of this process) holds that
  /// combination, or this desktop has no system-wide keys. Nothing else tells of a refusal.
  virtual bool registerHotKey(std::shared_ptr<const PTHotKey> hotKey, Error* error = nullptr) = 0;

  /// Removes the key, so that its combination is free for others. Does nothing for a key that is
  /// not registered.
  virtual void unregisterHotKey(const std::shared_ptr<const PTHotKey>& hotKey) = 0;

  /// Calls `keysMayBeHad` on the main queue when keys that were refused, or have left by
  /// themselves, may be had now: a desktop is there that was not. The keys are not registered again
  /// unasked. Calls `keysLeft` after keys have left by themselves; several may share one call.
  [[nodiscard]] virtual std::unique_ptr<Registration> addObserver(Handler keysMayBeHad,
                                                                  Handler keysLeft) = 0;
};

}  // namespace quennel
