#pragma once

#include <string>
#include <vector>

#include "platform/values/Result.h"

namespace quennel {

/// One of the helper's system-wide keys.
struct HelperKey {
  /// "shortcut" and the index of its template.
  std::string identifier;
  bool isBound = false;
  /// Why it is not bound.
  std::string reason;
};

/// Why the helper could not be spoken to.
struct HelperSilence {
  enum class Reason {
    NoSession,
    SessionDoesNotAnswer,
    Interrupted,
    /// It is not running and the session does not know how to start it.
    NotInstalled,
    /// The helper, or the session for it, answers that it will not; `detail` is its word.
    Refused,
    UnreadableAnswer,
    /// The question could not be put; `detail` is the system's reason.
    UnsendableQuestion,
  };

  Reason reason;
  std::string detail = {};
};

/// The way from another program to the session's helper. Main thread only; every operation waits
/// for its answer.
class HelperConnection {
 public:
  virtual ~HelperConnection() = default;

  /// Asks the helper to open the URL; it is started if needed. Returns when it has accepted.
  virtual Result<void, HelperSilence> open(const std::string& url) = 0;

  /// Posts the command to whoever listens and never starts anything. Whether a helper is running.
  virtual Result<bool, HelperSilence> notify(const std::string& command) = 0;

  /// Has the helper perform the action if it is running, and never starts anything: without a
  /// session there is no helper to be found. Returns when it is done. Whether a helper is running.
  virtual Result<bool, HelperSilence> perform(const std::string& action) = 0;

  /// The keys that the helper has tried to bind; it is started if needed.
  virtual Result<std::vector<HelperKey>, HelperSilence> keys() = 0;
};

}  // namespace quennel
