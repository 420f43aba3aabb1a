#pragma once

#include <stdexcept>

namespace quennel {

/// The command line makes no sense; the message says why. Ends the program with status 2.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The command could not do what it was asked; the message says why. Ends the program with
/// status 1.
class CommandFailure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace quennel
