#pragma once

#include <memory>
#include <string>
#include <utility>

#include "platform/ActionTarget.h"
#include "platform/values/PropertyList.h"

namespace quennel {

/// One system-wide key: which combination it is and what a press of it sends to whom. Immutable;
/// does nothing until a `PTHotKeyCenter` has registered it.
class PTHotKey {
 public:
  /// A hot key that sends `action`, with itself as the argument, to `target`. `keyCombo` is kept
  /// exactly as the settings hold it; whether it says a combination at all, the center decides when
  /// it registers the key. `title` is what a desktop that lists its keys shows for this one.
  /// `target` is not owned and outlives the key's registration.
  static std::shared_ptr<const PTHotKey> hotKeyWithIdentifier(std::string identifier,
                                                              PropertyList keyCombo,
                                                              ActionTarget& target,
                                                              std::string action,
                                                              std::string title = {}) {
    return std::shared_ptr<const PTHotKey>(new PTHotKey(
        std::move(identifier), std::move(keyCombo), target, std::move(action), std::move(title)));
  }

  const std::string& identifier() const { return _identifier; }
  const PropertyList& keyCombo() const { return _keyCombo; }
  const std::string& action() const { return _action; }
  const std::string& title() const { return _title; }

  /// Sends the action to the target, at once.
  void invoke() const { _target.performAction(_action, *this); }

 private:
  PTHotKey(std::string identifier, PropertyList keyCombo, ActionTarget& target, std::string action,
           std::string title)
      : _identifier(std::move(identifier)),
        _keyCombo(std::move(keyCombo)),
        _target(target),
        _action(std::move(action)),
        _title(std::move(title)) {}

  std::string _identifier;
  PropertyList _keyCombo;
  ActionTarget& _target;
  std::string _action;
  std::string _title;
};

}  // namespace quennel
