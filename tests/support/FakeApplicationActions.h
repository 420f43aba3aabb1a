#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "platform/ApplicationActions.h"

namespace quennel::test {

/// Another program asks for what the test says; the handler hears of it at once.
class FakeApplicationActions final : public ApplicationActions {
 public:
  /// Whether there is such an action.
  bool activate(const std::string& name, const std::optional<PropertyList>& parameter = {}) const {
    const auto action = _actions.find(name);
    const auto handler = action == _actions.end() ? nullptr : action->second.lock();
    if (handler) {
      (*handler)(parameter);
    }
    return handler != nullptr;
  }

  [[nodiscard]] std::unique_ptr<Registration> addAction(const std::string& name,
                                                        Handler handler) override {
    auto added = std::make_shared<const Handler>(std::move(handler));
    _actions.insert_or_assign(name, added);
    return std::make_unique<ActionRegistration>(std::move(added));
  }

 private:
  class ActionRegistration final : public Registration {
   public:
    explicit ActionRegistration(std::shared_ptr<const Handler> handler)
        : _handler(std::move(handler)) {}

   private:
    std::shared_ptr<const Handler> _handler;
  };

  std::map<std::string, std::weak_ptr<const Handler>> _actions;
};

}  // namespace quennel::test
