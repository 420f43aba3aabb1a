#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "platform/VolumeEvents.h"

namespace quennel::test {

/// Volumes come and go when the test says so; the observers hear of it at once.
class FakeVolumeEvents : public VolumeEvents {
 public:
  void mountVolume() const { notify(&Observer::didMount); }
  void unmountVolume() const { notify(&Observer::didUnmount); }

  std::size_t observerCount() const {
    std::size_t count = 0;
    for (const auto& observer : _observers) {
      count += observer.expired() ? 0 : 1;
    }
    return count;
  }

  [[nodiscard]] std::unique_ptr<Registration> addObserver(Handler didMount,
                                                          Handler didUnmount) override {
    auto observer =
        std::make_shared<const Observer>(Observer{std::move(didMount), std::move(didUnmount)});
    _observers.push_back(observer);
    return std::make_unique<ObserverRegistration>(std::move(observer));
  }

 private:
  struct Observer {
    Handler didMount;
    Handler didUnmount;
  };

  class ObserverRegistration final : public Registration {
   public:
    explicit ObserverRegistration(std::shared_ptr<const Observer> observer)
        : _observer(std::move(observer)) {}

   private:
    std::shared_ptr<const Observer> _observer;
  };

  void notify(Handler Observer::*handler) const {
    for (const auto& observing : std::vector(_observers)) {
      if (const auto observer = observing.lock()) {
        ((*observer).*handler)();
      }
    }
  }

  std::vector<std::weak_ptr<const Observer>> _observers;
};

}  // namespace quennel::test
