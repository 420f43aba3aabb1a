#pragma once

#include <string>

namespace quennel {

/// A name for an item in the making: hidden, and not likely to be met twice. Throws FileFailure.
std::string temporaryName();

}  // namespace quennel
