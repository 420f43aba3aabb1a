#pragma once

#include <string>
#include <vector>

#include "platform/linux/bus/BusTypes.h"

namespace quennel {

/// The key of a request's platform data under which its activation token travels.
inline constexpr auto activationTokenKey = "activation-token";

/// A call of `Open` of the helper or, with nothing to open, of `Activate`. Null when a URL cannot
/// travel.
BusMessage newOpenCall(sd_bus* connection, const std::vector<std::string>& urls,
                       const std::string& activationToken);

/// The token that the launcher gave, by the environment, to a program that it started.
std::string launchToken();
/// Removes it from the environment: the programs that this one starts shall not see it.
void forgetLaunchToken();

}  // namespace quennel
