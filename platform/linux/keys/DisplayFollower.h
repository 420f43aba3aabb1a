#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/linux/events/EventRunLoop.h"
#include "platform/linux/keys/DesktopHotKeyCenter.h"
#include "platform/linux/keys/DisplayWatch.h"

namespace quennel {

/// The number of a display of this machine: 12 of ":12.0"; nothing for one of another machine.
std::optional<int> localDisplayNumber(const std::string& display);

/// Sees that keys that want a display come by one: when their own answers again they may be
/// registered anew, and when another one does instead, the program is to move there. Main thread
/// only.
class DisplayFollower {
 public:
  struct Means {
    /// The display of this program, as DISPLAY names it.
    std::string display;
    /// Whether this user is let in to a display that answers.
    std::function<bool(const std::string& display)> canUse;
    /// What was opened at the old display is lost: the program has to begin anew at this one.
    std::function<void(const std::string& display)> moveTo;
    std::string socketFolder = DisplayWatch::socketFolder;
  };

  /// Neither `runLoop` nor `center` is owned.
  DisplayFollower(EventRunLoop& runLoop, DesktopHotKeyCenter& center, Means means);
  DisplayFollower(const DisplayFollower&) = delete;
  DisplayFollower& operator=(const DisplayFollower&) = delete;
  ~DisplayFollower();

  /// Somebody has asked for this program: what is missing is looked for now, among the displays
  /// that are there already, too.
  void lookAround();

 private:
  void takeDisplay(int number);

  DesktopHotKeyCenter& _center;
  EventRunLoop& _runLoop;
  Means _means;
  std::optional<int> _number;
  DisplayWatch _watch;
};

}  // namespace quennel
