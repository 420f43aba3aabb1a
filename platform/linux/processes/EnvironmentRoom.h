#pragma once

#include <initializer_list>

namespace quennel {

/// Lets the variables, which are not set, be set and removed later while other threads read the
/// environment: they get the places at its end, and no other variable is moved for them. Call it
/// while the program has one thread.
void makeRoomInEnvironment(std::initializer_list<const char*> names);

}  // namespace quennel
