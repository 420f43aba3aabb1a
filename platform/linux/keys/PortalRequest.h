#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/bus/BusTypes.h"
#include "platform/linux/bus/SessionBus.h"
#include "platform/values/PropertyList.h"

namespace quennel {

/// A question to the desktop portal, which is answered twice: the call at once, with the name of an
/// object, and the question itself by a signal of that object, after the user has been asked if
/// need be. Letting go of it ends the waiting.
class PortalRequest {
 public:
  static constexpr auto busName = "org.freedesktop.portal.Desktop";
  static constexpr auto objectPath = "/org/freedesktop/portal/desktop";

  /// The results; nothing when the portal, or the user, says no. The last thing that the request
  /// does: it may be let go of from within.
  using Answer = std::function<void(const std::optional<PropertyList::Dictionary>& results)>;

  /// `bus` is not owned. `token` names the request, for this connection, once.
  PortalRequest(SessionBus& bus, std::string token, Answer answer);
  PortalRequest(const PortalRequest&) = delete;
  PortalRequest& operator=(const PortalRequest&) = delete;
  ~PortalRequest();

  /// Sends the call, whose options hold the token. False when that cannot be done; then no answer
  /// comes.
  bool send(sd_bus_message* call);

 private:
  void takeReply(sd_bus_message* message);
  void takeResponse(sd_bus_message* message);
  void finish(const std::optional<PropertyList::Dictionary>& results);

  SessionBus& _bus;
  std::string _token;
  Answer _answer;
  BusSlot _responseMatch;
  BusSlot _call;
};

}  // namespace quennel
