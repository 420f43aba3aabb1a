#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/ActionTarget.h"
#include "platform/PTHotKey.h"

namespace quennel::test {

/// A target that notes which keys sent it actions.
class HotKeyActions : public ActionTarget {
 public:
  /// "action by identifier", in the order of arrival.
  std::vector<std::string> received;
  /// What else an action does.
  std::function<void()> onAction;

  void performAction(const std::string& name, const PTHotKey& sender) override {
    received.push_back(name + " by " + sender.identifier());
    if (onAction) {
      onAction();
    }
  }

  /// A key with the identifier `name` and the action "press".
  std::shared_ptr<const PTHotKey> hotKey(const std::string& name, PropertyList keyCombo) {
    return PTHotKey::hotKeyWithIdentifier(name, std::move(keyCombo), *this, "press");
  }
};

}  // namespace quennel::test
