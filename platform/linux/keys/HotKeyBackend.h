#pragma once

#include <cstdint>
#include <string>

#include "platform/Error.h"
#include "platform/keys/KeyCombination.h"

namespace quennel {

/// Names one bound combination. Chosen by whoever binds it, never used twice.
using HotKeyNumber = std::uint64_t;

/// Who is told what happens to the bound combinations. The calls come out of event callbacks, so
/// they may only take note and queue work.
class HotKeyListener {
 public:
  virtual ~HotKeyListener() = default;

  /// The combination was pressed; held down, it comes once.
  virtual void hotKeyPressed(HotKeyNumber number) = 0;

  /// The combination is not bound any more, though nobody has unbound it.
  virtual void hotKeyLost(HotKeyNumber number) = 0;

  /// What was refused or lost may be bound now.
  virtual void desktopAppeared() = 0;
};

/// What makes combinations system-wide on one kind of desktop. Main thread only.
class HotKeyBackend {
 public:
  struct Request {
    HotKeyNumber number;
    KeyCombination combination;
    /// What names the combination to the desktop, for good.
    std::string identifier;
    /// What the desktop may show for it.
    std::string title;
  };

  virtual ~HotKeyBackend() = default;

  /// False when the desktop refuses. One that has to ask somebody first answers true, and says
  /// `hotKeyLost` if the answer turns out to be no.
  virtual bool bind(const Request& request, Error* error) = 0;

  /// For a number that is bound.
  virtual void unbind(HotKeyNumber number) = 0;

  /// False once the desktop is gone: nothing is bound, nothing can be. Another backend may do.
  virtual bool isAlive() const = 0;
};

/// Fills the error that a caller has asked for; answers false, as the operation that failed does.
inline bool failWith(Error* error, int code, Error::Kind kind) {
  if (error) {
    *error = {code, kind};
  }
  return false;
}

}  // namespace quennel
