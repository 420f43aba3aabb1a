#pragma once

namespace quennel {

/// What a registering operation returns: destroying it ends the registration. After its destruction
/// the registered callback is not called again. Destroy it on the main thread.
class Registration {
 public:
  Registration() = default;
  Registration(const Registration&) = delete;
  Registration& operator=(const Registration&) = delete;
  virtual ~Registration() = default;
};

}  // namespace quennel
