#pragma once

#include <string>
#include <vector>

namespace quennel {

/// One of the helper's system-wide keys.
struct HelperKey {
  /// "shortcut" and the index of its template.
  std::string identifier;
  bool isBound;
  /// Why it is not bound.
  std::string reason;
};

/// The way to the session's helper. All operations throw a CommandFailure when there is no session
/// bus or it refuses.
class HelperConnection {
 public:
  virtual ~HelperConnection() = default;

  /// Asks the helper to open the URL; the bus starts it if needed. Returns when it has accepted.
  virtual void open(const std::string& url) = 0;

  /// Posts the command to whoever listens and never starts anything. Whether a helper is running.
  virtual bool notify(const std::string& command) = 0;

  /// The keys that the helper has tried to bind; the bus starts it if needed.
  virtual std::vector<HelperKey> keys() = 0;
};

}  // namespace quennel
