#pragma once

#include <poll.h>

#include <functional>
#include <memory>
#include <string>

#include "platform/PTHotKeyCenter.h"
#include "platform/RunLoop.h"
#include "tests/support/Deadline.h"

namespace quennel::test {

/// One kind of desktop with a hot-key center on it, and what a user and other programs do there.
/// Combinations are accelerator texts.
class HotKeyDesktop {
 public:
  virtual ~HotKeyDesktop() = default;

  virtual PTHotKeyCenter& center() = 0;
  virtual void destroyCenter() = 0;
  virtual RunLoop& runLoop() = 0;

  /// The user presses the combination, once; what this process is told is on its way when the call
  /// returns. All presses arrive in order.
  virtual void press(const std::string& accelerator) = 0;
  virtual void holdByAnotherProgram(const std::string& accelerator) = 0;
  /// The desktop ends, and with it whatever makes keys system-wide.
  virtual void end() = 0;

  bool runUntil(const std::function<bool()>& condition) {
    const Deadline deadline;
    while (!condition()) {
      if (deadline.hasPassed()) {
        return false;
      }
      pollfd polled{runLoop().descriptor(), POLLIN, 0};
      poll(&polled, 1, 1);
      runLoop().serve();
    }
    return true;
  }
};

/// What a test needs that is missing here, null when nothing is.
using MissingProgram = const char* (*)();
using MakeHotKeyDesktop = std::unique_ptr<HotKeyDesktop> (*)();

std::unique_ptr<HotKeyDesktop> makeFakeDesktop();
std::unique_ptr<HotKeyDesktop> makeX11Desktop();
std::unique_ptr<HotKeyDesktop> makePortalDesktop();
/// With the portal that desktops ship.
std::unique_ptr<HotKeyDesktop> makeRealPortalDesktop();
const char* missingForRealPortal();

}  // namespace quennel::test
