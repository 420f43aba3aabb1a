#include "platform/linux/keys/DesktopHotKeyCenter.h"

#include <algorithm>
#include <cerrno>
#include <optional>
#include <utility>

namespace quennel {

class DesktopHotKeyCenter::ObserverRegistration final : public Registration {
 public:
  explicit ObserverRegistration(std::shared_ptr<const Observer> observer)
      : _observer(std::move(observer)) {}

 private:
  std::shared_ptr<const Observer> _observer;
};

DesktopHotKeyCenter::DesktopHotKeyCenter(RunLoop& runLoop, OpenBackend openBackend)
    : _runLoop(runLoop), _openBackend(std::move(openBackend)) {}

DesktopHotKeyCenter::~DesktopHotKeyCenter() = default;

PTHotKeyCenter::HotKeys DesktopHotKeyCenter::allHotKeys() const {
  HotKeys hotKeys;
  hotKeys.reserve(_entries->size());
  for (const Entry& entry : *_entries) {
    hotKeys.push_back(entry.hotKey);
  }
  return hotKeys;
}

bool DesktopHotKeyCenter::registerHotKey(std::shared_ptr<const PTHotKey> hotKey, Error* error) {
  const std::string identifier = hotKey->identifier();
  Error reason;
  if (bind(std::move(hotKey), &reason)) {
    _refusals.erase(identifier);
    return true;
  }
  if (error) {
    *error = reason;
  }
  _refusals.insert_or_assign(identifier, std::move(reason));
  return false;
}

bool DesktopHotKeyCenter::bind(std::shared_ptr<const PTHotKey> hotKey, Error* error) {
  const auto combination = KeyCombination::fromPropertyList(hotKey->keyCombo());
  if (!combination) {
    return failWith(error, EINVAL, Error::Kind::NoKeyCombination);
  }
  if (std::ranges::find(*_entries, *combination, &Entry::combination) != _entries->end()) {
    return failWith(error, EEXIST, Error::Kind::CombinationInUseHere);
  }
  if (!hasBackend(error)) {
    return false;
  }
  const HotKeyNumber number = ++_lastNumber;
  if (!_backend->bind({number, *combination, hotKey->identifier(), hotKey->title()}, error)) {
    return false;
  }
  _entries->push_back({number, *combination, std::move(hotKey)});
  return true;
}

void DesktopHotKeyCenter::unregisterHotKey(const std::shared_ptr<const PTHotKey>& hotKey) {
  const auto entry = std::ranges::find(*_entries, hotKey, &Entry::hotKey);
  if (entry == _entries->end()) {
    return;
  }
  const HotKeyNumber number = entry->number;
  _entries->erase(entry);
  _backend->unbind(number);
}

bool DesktopHotKeyCenter::hasBackend(Error* error) {
  if (_backend && !_backend->isAlive()) {
    _backend.reset();
  }
  if (!_backend) {
    _backend = _openBackend(*this, error);
  }
  _lacksBackend = _backend == nullptr;
  if (_lacksBackend) {
    tellOfLack();
  }
  return !_lacksBackend;
}

bool DesktopHotKeyCenter::lacksDesktop() const {
  return _lacksBackend || (_backend && !_backend->isAlive());
}

std::unique_ptr<Registration> DesktopHotKeyCenter::addObserver(Handler keysMayBeHad,
                                                               Handler keysLeft) {
  auto observer =
      std::make_shared<const Observer>(Observer{std::move(keysMayBeHad), std::move(keysLeft)});
  _observers.push_back(observer);
  return std::make_unique<ObserverRegistration>(std::move(observer));
}

void DesktopHotKeyCenter::tellObservers(Handler Observer::*handler) {
  std::erase_if(_observers, [](const auto& observer) { return observer.expired(); });
  for (const auto& observer : _observers) {
    _runLoop.dispatchAsync([observer, handler] {
      if (const auto observing = observer.lock()) {
        ((*observing).*handler)();
      }
    });
  }
}

void DesktopHotKeyCenter::desktopAppeared() {
  if (!_refusals.empty()) {
    tellObservers(&Observer::keysMayBeHad);
  }
}

void DesktopHotKeyCenter::hotKeyPressed(HotKeyNumber number) {
  _runLoop.dispatchAsync([number, entries = std::weak_ptr<const Entries>(_entries)] {
    const auto remaining = entries.lock();
    if (!remaining) {
      return;
    }
    const auto entry = std::ranges::find(*remaining, number, &Entry::number);
    if (entry != remaining->end()) {
      // The action may unregister the key.
      const auto hotKey = entry->hotKey;
      hotKey->invoke();
    }
  });
}

void DesktopHotKeyCenter::hotKeyLost(HotKeyNumber number) {
  const auto entry = std::ranges::find(*_entries, number, &Entry::number);
  if (entry != _entries->end()) {
    failWith(&_refusals[entry->hotKey->identifier()], ECANCELED, Error::Kind::CombinationRefused);
    _entries->erase(entry);
    tellOfLoss();
    tellOfLack();
  }
}

/// Once for all that happens before the queue's turn comes.
void DesktopHotKeyCenter::tellLater(std::shared_ptr<const bool>& queued,
                                    const RunLoop::Work& tell) {
  if (queued) {
    return;
  }
  queued = std::make_shared<const bool>(true);
  _runLoop.dispatchAsync([&queued, tell, current = std::weak_ptr(queued)] {
    if (!current.expired()) {
      queued.reset();
      tell();
    }
  });
}

void DesktopHotKeyCenter::tellOfLoss() {
  tellLater(_queuedLoss, [this] { tellObservers(&Observer::keysLeft); });
}

void DesktopHotKeyCenter::tellOfLack() {
  tellLater(_queuedLack, [this] {
    if (_desktopLackHandler && lacksDesktop()) {
      _desktopLackHandler();
    }
  });
}

}  // namespace quennel
