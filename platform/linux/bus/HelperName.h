#pragma once

namespace quennel {

// What the helper is called on the session bus, and what it is spoken to as.
inline constexpr auto helperBusName = "net.brellow.QuennelHelper";
inline constexpr auto helperObjectPath = "/net/brellow/QuennelHelper";
inline constexpr auto applicationInterface = "org.freedesktop.Application";

}  // namespace quennel
