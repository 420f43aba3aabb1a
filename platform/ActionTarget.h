#pragma once

#include <string>

namespace quennel {

class PTHotKey;

/// An object whose actions are known by their names only: which names it answers is its own matter,
/// settled when an action is sent. Main thread only.
class ActionTarget {
 public:
  virtual ~ActionTarget() = default;

  /// Performs the action of that name; a name the target does not know does nothing. `sender` is
  /// what the action was sent by and lives at least until the action has returned.
  virtual void performAction(const std::string& name, const PTHotKey& sender) = 0;
};

}  // namespace quennel
