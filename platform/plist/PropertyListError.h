#pragma once

#include <stdexcept>

namespace quennel {

/// Why a value cannot be put into a property list; a sentence for the user.
class PropertyListError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace quennel
