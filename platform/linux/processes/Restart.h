#pragma once

#include <string>

namespace quennel {

/// Puts the program at `executable`, without arguments, in the place of this process, with one
/// variable of its environment changed. Nothing may be left that ends in an orderly way, and no
/// other thread that reads the environment. Returns only when the system refuses.
void restartWithVariable(const std::string& executable, const char* name, const std::string& value);

}  // namespace quennel
