#include "tests/support/FakeHotKeyCenter.h"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace quennel::test {
namespace {

bool refuse(Error* error, int code) {
  if (error) {
    *error = {code, Error::Kind::CombinationInUse};
  }
  return false;
}

}  // namespace

class FakeHotKeyCenter::ObserverRegistration final : public Registration {
 public:
  explicit ObserverRegistration(std::shared_ptr<const Observer> observer)
      : _observer(std::move(observer)) {}

 private:
  std::shared_ptr<const Observer> _observer;
};

void FakeHotKeyCenter::press(const std::string& accelerator) {
  const auto pressed = hotKeyFor(KeyCombination::fromAccelerator(accelerator).value());
  if (!pressed) {
    return;
  }
  _runLoop.dispatchAsync([pressed, hotKeys = std::weak_ptr<const HotKeys>(_hotKeys)] {
    const auto remaining = hotKeys.lock();
    if (remaining && std::ranges::find(*remaining, pressed) != remaining->end()) {
      pressed->invoke();
    }
  });
}

void FakeHotKeyCenter::holdByAnotherProgram(const std::string& accelerator) {
  _heldByOthers.push_back(KeyCombination::fromAccelerator(accelerator).value());
}

void FakeHotKeyCenter::endDesktop() {
  isAvailable = false;
  if (!_hotKeys->empty()) {
    _hotKeys->clear();
    tellObservers(&Observer::keysLeft);
  }
}

void FakeHotKeyCenter::startDesktop() {
  isAvailable = true;
  tellObservers(&Observer::keysMayBeHad);
}

std::unique_ptr<Registration> FakeHotKeyCenter::addObserver(Handler keysMayBeHad,
                                                            Handler keysLeft) {
  auto observer =
      std::make_shared<const Observer>(Observer{std::move(keysMayBeHad), std::move(keysLeft)});
  _observers.push_back(observer);
  return std::make_unique<ObserverRegistration>(std::move(observer));
}

void FakeHotKeyCenter::tellObservers(Handler Observer::*handler) {
  for (const auto& observer : _observers) {
    _runLoop.dispatchAsync([observer, handler] {
      if (const auto observing = observer.lock()) {
        ((*observing).*handler)();
      }
    });
  }
}

bool FakeHotKeyCenter::registerHotKey(std::shared_ptr<const PTHotKey> hotKey, Error* error) {
  if (whileRegistering) {
    whileRegistering();
  }
  const auto combination = KeyCombination::fromPropertyList(hotKey->keyCombo());
  if (!combination) {
    return refuse(error, EINVAL);
  }
  if (!isAvailable) {
    return refuse(error, ENOTSUP);
  }
  if (hotKeyFor(*combination)) {
    return refuse(error, EEXIST);
  }
  if (std::ranges::find(_heldByOthers, *combination) != _heldByOthers.end()) {
    return refuse(error, EBUSY);
  }
  _hotKeys->push_back(std::move(hotKey));
  return true;
}

void FakeHotKeyCenter::unregisterHotKey(const std::shared_ptr<const PTHotKey>& hotKey) {
  std::erase(*_hotKeys, hotKey);
}

std::shared_ptr<const PTHotKey> FakeHotKeyCenter::hotKeyFor(
    const KeyCombination& combination) const {
  for (const auto& hotKey : *_hotKeys) {
    if (KeyCombination::fromPropertyList(hotKey->keyCombo()) == combination) {
      return hotKey;
    }
  }
  return nullptr;
}

}  // namespace quennel::test
