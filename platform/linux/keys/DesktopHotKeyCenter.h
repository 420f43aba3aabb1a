#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/PTHotKeyCenter.h"
#include "platform/RunLoop.h"
#include "platform/linux/keys/HotKeyBackend.h"

namespace quennel {

/// The hot keys of this process, made system-wide by a backend that is opened for the first key and
/// not before.
class DesktopHotKeyCenter final : public PTHotKeyCenter, private HotKeyListener {
 public:
  /// Opens the desktop's backend, which tells the listener. Null, with the reason, where there is
  /// none; it is then asked again for the next key.
  using OpenBackend =
      std::function<std::unique_ptr<HotKeyBackend>(HotKeyListener& listener, Error* error)>;

  /// `runLoop` is not owned.
  DesktopHotKeyCenter(RunLoop& runLoop, OpenBackend openBackend);
  DesktopHotKeyCenter(const DesktopHotKeyCenter&) = delete;
  DesktopHotKeyCenter& operator=(const DesktopHotKeyCenter&) = delete;
  ~DesktopHotKeyCenter() override;

  HotKeys allHotKeys() const override;
  bool registerHotKey(std::shared_ptr<const PTHotKey> hotKey, Error* error = nullptr) override;
  void unregisterHotKey(const std::shared_ptr<const PTHotKey>& hotKey) override;

  /// By their identifiers, the keys that did not become or stay system-wide, and why not.
  const std::map<std::string, Error>& refusals() const { return _refusals; }

 private:
  struct Entry {
    HotKeyNumber number;
    KeyCombination combination;
    std::shared_ptr<const PTHotKey> hotKey;
  };
  using Entries = std::vector<Entry>;

  void hotKeyPressed(HotKeyNumber number) override;
  void hotKeyLost(HotKeyNumber number) override;
  bool bind(std::shared_ptr<const PTHotKey> hotKey, Error* error);
  bool hasBackend(Error* error);

  RunLoop& _runLoop;
  OpenBackend _openBackend;
  HotKeyNumber _lastNumber = 0;
  /// Shared with the presses that wait in the queue: they do nothing once it is gone.
  std::shared_ptr<Entries> _entries = std::make_shared<Entries>();
  std::map<std::string, Error> _refusals;
  /// The last member: it goes first, while there is still someone to listen.
  std::unique_ptr<HotKeyBackend> _backend;
};

}  // namespace quennel
