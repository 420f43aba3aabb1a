#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/DistributedNotificationCenter.h"
#include "platform/RunLoop.h"

namespace quennel::test {

/// A session in which this process and the test are alone. What is posted, by either, reaches the
/// observers through the main queue.
class FakeDistributedNotificationCenter final : public DistributedNotificationCenter {
 public:
  explicit FakeDistributedNotificationCenter(RunLoop& runLoop) : _runLoop(runLoop) {}

  /// What was posted, in order, and the names that were observed, in order.
  std::vector<Notification> posted;
  std::vector<std::string> observedNames;

  [[nodiscard]] std::unique_ptr<Registration> addObserver(const std::string& name,
                                                          Notification::Handler handler) override {
    observedNames.push_back(name);
    auto observer = std::make_unique<Observer>(name, std::move(handler));
    _observers.push_back(observer->state);
    return observer;
  }

  void postNotification(const Notification& notification, bool) override {
    posted.push_back(notification);
    auto travelled = notification;
    if (travelled.object == "") {
      travelled.object.reset();
    }
    for (const auto& observer : _observers) {
      _runLoop.dispatchAsync([observer, travelled] {
        const auto state = observer.lock();
        if (state && state->name == travelled.name) {
          state->handler(travelled);
        }
      });
    }
  }

  /// How many observers there are now.
  std::size_t observerCount() const {
    std::size_t count = 0;
    for (const auto& observer : _observers) {
      count += observer.expired() ? 0 : 1;
    }
    return count;
  }

 private:
  struct State {
    std::string name;
    Notification::Handler handler;
  };
  struct Observer final : Registration {
    Observer(const std::string& name, Notification::Handler handler)
        : state(std::make_shared<State>(State{name, std::move(handler)})) {}
    std::shared_ptr<State> state;
  };

  RunLoop& _runLoop;
  std::vector<std::weak_ptr<State>> _observers;
};

}  // namespace quennel::test
