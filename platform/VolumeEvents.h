#pragma once

#include <functional>
#include <memory>

#include "platform/Registration.h"

namespace quennel {

/// The workspace's word that volumes were mounted or unmounted. Main thread only.
class VolumeEvents {
 public:
  using Handler = std::function<void()>;

  virtual ~VolumeEvents() = default;

  /// Calls `didMount` on the main queue after volumes were mounted, `didUnmount` after some were
  /// unmounted. Several that come or go at once may share one call.
  [[nodiscard]] virtual std::unique_ptr<Registration> addObserver(Handler didMount,
                                                                  Handler didUnmount) = 0;
};

}  // namespace quennel
