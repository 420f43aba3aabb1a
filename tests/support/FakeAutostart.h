#pragma once

#include <optional>

#include "platform/Autostart.h"

namespace quennel::test {

class FakeAutostart : public Autostart {
 public:
  bool enabled = false;
  /// Every change fails with this.
  std::optional<Error> failure;

  bool isEnabled() const override { return enabled; }

  bool setEnabled(bool isEnabled, Error* error = nullptr) override {
    if (failure) {
      if (error) {
        *error = *failure;
      }
      return false;
    }
    enabled = isEnabled;
    return true;
  }
};

}  // namespace quennel::test
