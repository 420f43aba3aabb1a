#pragma once

#include <string>
#include <vector>

namespace quennel {

/// Starts the program `arguments[0]`, a path, in a session of its own and returns at once. It
/// outlives this process and writes nothing but errors to where this one does: whoever reads the
/// output of this process to its end does not wait for it. False when it cannot be started.
bool startInBackground(const std::vector<std::string>& arguments);

}  // namespace quennel
