#pragma once

#include <cstddef>

namespace quennel {

// What a property list may have before it counts as unreadable. Settings stay far below, with ten
// thousand templates too; the limits are there because a damaged or hostile file must cost neither
// the stack nor all memory (in the binary form one object can be referred to any number of times).

constexpr std::size_t maximumPropertyListSize = std::size_t{16} << 20;
constexpr std::size_t maximumPropertyListDepth = 128;
/// Values and keys, as often as they are referred to.
constexpr std::size_t maximumPropertyListCount = 1'000'000;

}  // namespace quennel
