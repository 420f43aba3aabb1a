#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/Registration.h"

namespace quennel {

/// The request to open one URL.
struct URLEvent {
  /// The URL, as a valid RFC 3986 reference wherever that can be had: characters that launchers
  /// leave unescaped (spaces, bytes above ASCII) have been percent-escaped.
  std::optional<std::string> directObject;
  /// The token by which the sender lets the helper's window come to the front; empty when there is
  /// none.
  std::string activationToken;

  using Handler = std::function<void(const URLEvent&)>;
};

/// The URLs that the session asks this program to open. Main thread only.
class URLEvents {
 public:
  virtual ~URLEvents() = default;

  /// Calls `handler` on the main queue for every event, in the order of arrival. There is one
  /// handler; events that arrive while there is none are kept for the next one.
  [[nodiscard]] virtual std::unique_ptr<Registration> setEventHandler(
      URLEvent::Handler handler) = 0;
};

}  // namespace quennel
