#pragma once

#include <string>

namespace quennel {

/// Gives the item `staged` of the open folder the name of what `name` is in it, in one step, and
/// removes that. Throws FileFailure, of the step `Removing`, when that may not be moved or removed:
/// then it has its name again, and `staged` is what it was.
void putInPlaceOf(int folder, const std::string& staged, const std::string& name);

}  // namespace quennel
