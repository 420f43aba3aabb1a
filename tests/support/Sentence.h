#pragma once

#include <string>

#include "platform/Error.h"

namespace quennel::test {

/// What an English user reads about the failure.
inline std::string sentenceOf(const Error& error) { return error.description(); }

}  // namespace quennel::test
