#pragma once

#include <string>

namespace quennel {

/// Why a platform operation failed. Operations take an optional `Error*`, which they fill only when
/// they report failure by their result; a null pointer means that nobody asks.
struct Error {
  /// The errno value behind the failure, 0 when there is none.
  int code = 0;
  /// A sentence for the user, in the user's language as far as the system has it.
  std::string localizedDescription;
};

}  // namespace quennel
