#pragma once

#include <deque>
#include <string>
#include <utility>

#include "platform/RunLoop.h"
#include "platform/URLEvents.h"
#include "platform/values/URL.h"

namespace quennel::test {

/// A desktop that asks for what the test says, through the main queue.
class FakeURLEvents final : public URLEvents {
 public:
  explicit FakeURLEvents(RunLoop& runLoop) : _runLoop(runLoop) {}

  /// A launcher opens the URL, escaped or not.
  void open(const std::string& url, const std::string& activationToken = {}) {
    receive({escapingInvalidCharacters(url), activationToken});
  }

  /// Any event, one without a URL too.
  void receive(URLEvent event) {
    _kept.push_back(std::move(event));
    _runLoop.dispatchAsync([this] { deliverNext(); });
  }

  bool hasEventHandler() const { return static_cast<bool>(_handler); }

  [[nodiscard]] std::unique_ptr<Registration> setEventHandler(URLEvent::Handler handler) override {
    _handler = std::move(handler);
    for (std::size_t i = 0; i < _kept.size(); ++i) {
      _runLoop.dispatchAsync([this] { deliverNext(); });
    }
    return std::make_unique<HandlerRegistration>(*this);
  }

 private:
  class HandlerRegistration final : public Registration {
   public:
    explicit HandlerRegistration(FakeURLEvents& events)
        : _events(events), _number(++events._registrations) {}
    ~HandlerRegistration() override {
      if (_events._registrations == _number) {
        _events._handler = nullptr;
      }
    }

   private:
    FakeURLEvents& _events;
    int _number;
  };

  void deliverNext() {
    if (!_handler || _kept.empty()) {
      return;
    }
    const auto event = std::move(_kept.front());
    _kept.pop_front();
    const auto handler = _handler;
    handler(event);
  }

  RunLoop& _runLoop;
  std::deque<URLEvent> _kept;
  URLEvent::Handler _handler;
  int _registrations = 0;
};

}  // namespace quennel::test
