#include "platform/linux/keys/DesktopHotKeyCenter.h"

#include <algorithm>
#include <cerrno>
#include <optional>
#include <utility>

namespace quennel {

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
    return failWith(error, EINVAL, "This is not a key combination.");
  }
  if (std::ranges::find(*_entries, *combination, &Entry::combination) != _entries->end()) {
    return failWith(error, EEXIST, "Another key of this program has this combination.");
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
  return _backend != nullptr;
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
    failWith(&_refusals[entry->hotKey->identifier()], ECANCELED,
             "The desktop has withdrawn the key, or was not allowed to give it.");
    _entries->erase(entry);
  }
}

}  // namespace quennel
