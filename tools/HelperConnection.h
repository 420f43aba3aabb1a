#pragma once

#include <string>

namespace quennel {

/// The way to the session's helper. Both operations throw a CommandFailure when there is no session
/// bus or it refuses.
class HelperConnection {
 public:
  virtual ~HelperConnection() = default;

  /// Asks the helper to open the URL; the bus starts it if needed. Returns when it has accepted.
  virtual void open(const std::string& url) = 0;

  /// Posts the command to whoever listens and never starts anything. Whether a helper is running.
  virtual bool notify(const std::string& command) = 0;
};

}  // namespace quennel
