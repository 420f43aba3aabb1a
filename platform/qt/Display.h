#pragma once

#include <string>

namespace quennel {

/// The platform plugins that can reach a display now, in the toolkit's notation ("xcb;wayland"),
/// the preferred one first; empty when there is no display. Asked before an application object is
/// made, because that ends the process when it finds none.
///
/// X11 is preferred where both are there: only it lets a window stay above others.
std::string reachablePlatforms();

}  // namespace quennel
