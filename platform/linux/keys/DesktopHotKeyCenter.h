#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/PTHotKeyCenter.h"
#include "platform/RunLoop.h"
#include "platform/linux/keys/HotKeyBackend.h"

namespace quennel {

/// The hot keys of this process, made system-wide by a backend that is opened for the first key and
/// not before.
class DesktopHotKeyCenter final : public PTHotKeyCenter, public HotKeyListener {
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
  [[nodiscard]] std::unique_ptr<Registration> addObserver(Handler keysMayBeHad,
                                                          Handler keysLeft) override;

  void hotKeyPressed(HotKeyNumber number) override;
  void hotKeyLost(HotKeyNumber number) override;
  /// Tells the observers that what is missing may be had now; not when nothing is.
  void desktopAppeared() override;

  /// Whether a desktop has been looked for that is not there, or was there and has gone.
  bool lacksDesktop() const;
  /// Called from the main queue when that has come about; may be null.
  void setDesktopLackHandler(Handler handler) { _desktopLackHandler = std::move(handler); }

  /// By their identifiers, the keys that did not become or stay system-wide, and why not.
  const std::map<std::string, Error>& refusals() const { return _refusals; }

 private:
  struct Entry {
    HotKeyNumber number;
    KeyCombination combination;
    std::shared_ptr<const PTHotKey> hotKey;
  };
  using Entries = std::vector<Entry>;
  struct Observer {
    Handler keysMayBeHad;
    Handler keysLeft;
  };
  class ObserverRegistration;

  bool bind(std::shared_ptr<const PTHotKey> hotKey, Error* error);
  bool hasBackend(Error* error);
  void tellLater(std::shared_ptr<const bool>& queued, const RunLoop::Work& tell);
  void tellOfLoss();
  void tellOfLack();
  void tellObservers(Handler Observer::*handler);

  RunLoop& _runLoop;
  OpenBackend _openBackend;
  HotKeyNumber _lastNumber = 0;
  /// Shared with the presses that wait in the queue: they do nothing once it is gone.
  std::shared_ptr<Entries> _entries = std::make_shared<Entries>();
  std::map<std::string, Error> _refusals;
  std::vector<std::weak_ptr<const Observer>> _observers;
  /// Shared with the queued word that keys have left; null when none is queued.
  std::shared_ptr<const bool> _queuedLoss;
  /// The same of the word that there is no desktop.
  std::shared_ptr<const bool> _queuedLack;
  Handler _desktopLackHandler;
  bool _lacksBackend = false;
  /// The last member: it goes first, while there is still someone to listen.
  std::unique_ptr<HotKeyBackend> _backend;
};

}  // namespace quennel
