#include <stdlib.h>

#include <optional>
#include <stdexcept>

#include "platform/linux/events/EventRunLoop.h"
#include "platform/linux/keys/DesktopHotKeyCenter.h"
#include "platform/linux/keys/x11/X11HotKeys.h"
#include "tests/contract/keys/HotKeyDesktop.h"
#include "tests/support/KeyboardDisplay.h"

namespace quennel::test {
namespace {

/// In the words of xdotool.
std::string keysOf(const std::string& accelerator) {
  const auto combination = KeyCombination::fromAccelerator(accelerator).value();
  std::string keys;
  keys += combination.modifiers & KeyCombination::control ? "ctrl+" : "";
  keys += combination.modifiers & KeyCombination::alt ? "alt+" : "";
  keys += combination.modifiers & KeyCombination::shift ? "shift+" : "";
  keys += combination.modifiers & KeyCombination::super ? "super+" : "";
  return keys + combination.key;
}

class X11Desktop final : public HotKeyDesktop {
 public:
  X11Desktop() {
    setenv("DISPLAY", _display.name().c_str(), 1);
    _center.emplace(_runLoop, open());
    _otherProgram.emplace(_runLoop, open());
  }
  X11Desktop(const X11Desktop&) = delete;
  X11Desktop& operator=(const X11Desktop&) = delete;
  ~X11Desktop() override { unsetenv("DISPLAY"); }

  PTHotKeyCenter& center() override { return *_center; }
  void destroyCenter() override { _center.reset(); }
  RunLoop& runLoop() override { return _runLoop; }
  void press(const std::string& accelerator) override { _display.press(keysOf(accelerator)); }
  void holdByAnotherProgram(const std::string& accelerator) override {
    if (!_otherProgram->registerHotKey(_nobody.hotKey("held", accelerator))) {
      throw std::runtime_error(accelerator + " is held already");
    }
  }
  void end() override { _display.stop(); }

 private:
  class Nobody : public ActionTarget {
   public:
    std::shared_ptr<const PTHotKey> hotKey(const std::string& name, const std::string& keyCombo) {
      return PTHotKey::hotKeyWithIdentifier(name, keyCombo, *this, "");
    }
    void performAction(const std::string&, const PTHotKey&) override {}
  };

  DesktopHotKeyCenter::OpenBackend open() {
    return [this](HotKeyListener& listener, Error* error) {
      return X11HotKeys::open(_runLoop.handle(), _runLoop, listener, error);
    };
  }

  KeyboardDisplay _display;
  EventRunLoop _runLoop;
  Nobody _nobody;
  std::optional<DesktopHotKeyCenter> _center;
  std::optional<DesktopHotKeyCenter> _otherProgram;
};

}  // namespace

std::unique_ptr<HotKeyDesktop> makeX11Desktop() { return std::make_unique<X11Desktop>(); }

}  // namespace quennel::test
