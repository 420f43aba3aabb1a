#include "platform/linux/keys/PortalRequest.h"

#include <cstdint>
#include <string_view>
#include <utility>

#include "platform/linux/bus/BusPropertyList.h"

namespace quennel {
namespace {

constexpr auto responseRule =
    "type='signal',sender='org.freedesktop.portal.Desktop',"
    "interface='org.freedesktop.portal.Request',member='Response'";

constexpr std::uint32_t success = 0;

/// The user may take as long as he likes.
constexpr std::uint64_t noTimeLimit = UINT64_MAX;

}  // namespace

PortalRequest::PortalRequest(SessionBus& bus, std::string token, Answer answer)
    : _bus(bus), _token(std::move(token)), _answer(std::move(answer)) {}

PortalRequest::~PortalRequest() = default;

bool PortalRequest::send(sd_bus_message* call) {
  const auto takeResponse = [](sd_bus_message* message, void* self, sd_bus_error*) {
    static_cast<PortalRequest*>(self)->takeResponse(message);
    return 0;
  };
  const auto ignoreAnswer = [](sd_bus_message*, void*, sd_bus_error*) { return 0; };
  const auto takeReply = [](sd_bus_message* message, void* self, sd_bus_error*) {
    static_cast<PortalRequest*>(self)->takeReply(message);
    return 0;
  };
  sd_bus_slot* slot = nullptr;
  // Before the call: the answer may come right behind the reply.
  if (sd_bus_add_match_async(_bus.connection(), &slot, responseRule, takeResponse, ignoreAnswer,
                             this) < 0) {
    return false;
  }
  _responseMatch.reset(slot);
  if (sd_bus_call_async(_bus.connection(), &slot, call, takeReply, this, noTimeLimit) < 0) {
    return false;
  }
  _call.reset(slot);
  return true;
}

void PortalRequest::takeReply(sd_bus_message* message) {
  if (sd_bus_message_is_method_error(message, nullptr) > 0) {
    finish(std::nullopt);
  }
}

void PortalRequest::takeResponse(sd_bus_message* message) {
  const char* const path = sd_bus_message_get_path(message);
  if (!path || !std::string_view(path).ends_with("/" + _token) ||
      !sd_bus_message_has_signature(message, "ua{sv}")) {
    return;
  }
  std::uint32_t response = 0;
  if (sd_bus_message_read(message, "u", &response) <= 0 || response != success) {
    return finish(std::nullopt);
  }
  finish(readDictionary(message));
}

void PortalRequest::finish(const std::optional<PropertyList::Dictionary>& results) {
  _responseMatch.reset();
  _call.reset();
  const Answer answer = std::move(_answer);
  answer(results);
}

}  // namespace quennel
