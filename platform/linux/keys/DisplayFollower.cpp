#include "platform/linux/keys/DisplayFollower.h"

#include <charconv>
#include <string_view>
#include <system_error>
#include <utility>

namespace quennel {

std::optional<int> localDisplayNumber(const std::string& display) {
  std::string_view text = display;
  text.remove_prefix(text.starts_with("unix:") ? std::string_view("unix").size() : 0);
  if (!text.starts_with(':')) {
    return std::nullopt;
  }
  int number = 0;
  const char* const end = text.data() + text.size();
  const auto parsed = std::from_chars(text.data() + 1, end, number);
  const bool isNumber = parsed.ec == std::errc() && (parsed.ptr == end || *parsed.ptr == '.');
  return isNumber && number >= 0 ? std::optional(number) : std::nullopt;
}

DisplayFollower::DisplayFollower(EventRunLoop& runLoop, DesktopHotKeyCenter& center, Means means)
    : _center(center),
      _runLoop(runLoop),
      _means(std::move(means)),
      _number(localDisplayNumber(_means.display)),
      _watch(
          runLoop, [this](int number) { takeDisplay(number); }, _means.socketFolder) {
  _center.setDesktopLackHandler([this] {
    if (_number) {
      _watch.start();
    }
  });
}

DisplayFollower::~DisplayFollower() { _center.setDesktopLackHandler(nullptr); }

/// The displays are asked behind whoever registers keys anew, so that nobody moves away from a
/// display that will do.
void DisplayFollower::lookAround() {
  _center.desktopAppeared();
  if (_number || _means.display.empty()) {
    _runLoop.dispatchAsync([this] {
      if (_center.lacksDesktop()) {
        _watch.lookAround();
      }
    });
  }
}

void DisplayFollower::takeDisplay(int number) {
  if (!_center.lacksDesktop()) {
    return;
  }
  if (number == _number) {
    _watch.stop();
    return _center.desktopAppeared();
  }
  const std::string display = ":" + std::to_string(number);
  if ((!_number || !_watch.isThere(*_number)) && _means.canUse(display)) {
    _means.moveTo(display);
  }
}

}  // namespace quennel
