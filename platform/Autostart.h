#pragma once

#include "platform/Error.h"

namespace quennel {

/// Whether the desktop starts the helper at login, so that the templates' keys work from then on.
class Autostart {
 public:
  virtual ~Autostart() = default;

  /// Whether there is something by which the desktop starts it, or which the user has switched off.
  virtual bool isEnabled() const = 0;

  /// Makes it so, or not so. What is there stays as it is: its user may have switched it off.
  virtual bool setEnabled(bool isEnabled, Error* error = nullptr) = 0;
};

}  // namespace quennel
