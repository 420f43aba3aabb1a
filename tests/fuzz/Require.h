#pragma once

#include <cstdio>
#include <cstdlib>

namespace quennel::test {

/// Ends the run, which then reports the input, when a rule does not hold.
inline void require(bool holds, const char* rule) {
  if (!holds) {
    std::fprintf(stderr, "broken: %s\n", rule);
    std::abort();
  }
}

}  // namespace quennel::test
