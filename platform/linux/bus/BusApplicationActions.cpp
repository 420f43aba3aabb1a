#include "platform/linux/bus/BusApplicationActions.h"

#include <utility>

#include "platform/linux/bus/BusPropertyList.h"

namespace quennel {

class BusApplicationActions::ActionRegistration final : public Registration {
 public:
  ActionRegistration(BusApplicationActions& actions, std::string name,
                     std::shared_ptr<const Handler> handler)
      : _actions(actions), _name(std::move(name)), _handler(std::move(handler)) {}
  ActionRegistration(const ActionRegistration&) = delete;
  ActionRegistration& operator=(const ActionRegistration&) = delete;
  ~ActionRegistration() override {
    const auto action = _actions._actions.find(_name);
    if (action != _actions._actions.end() && action->second == _handler) {
      _actions._actions.erase(action);
    }
  }

 private:
  BusApplicationActions& _actions;
  std::string _name;
  std::shared_ptr<const Handler> _handler;
};

std::unique_ptr<Registration> BusApplicationActions::addAction(const std::string& name,
                                                               Handler handler) {
  auto added = std::make_shared<const Handler>(std::move(handler));
  _actions.insert_or_assign(name, added);
  _bus.runLoop().dispatchAsync([this] { answerCalls(); });
  return std::make_unique<ActionRegistration>(*this, name, std::move(added));
}

/// The parameter comes in an array of none or one. What is done waits its turn in the main queue,
/// behind requests that came before it.
int BusApplicationActions::receive(sd_bus_message* call) {
  const char* name = nullptr;
  const int result = sd_bus_message_read(call, "s", &name);
  if (result < 0) {
    return result;
  }
  Call received{BusMessage(sd_bus_message_ref(call)), name, std::nullopt};
  const auto parameters = readPropertyList(call);
  const PropertyList::Array* const array = parameters ? parameters->array() : nullptr;
  if (array && !array->empty()) {
    received.parameter = array->front();
  }
  _calls.push_back(std::move(received));
  _bus.runLoop().dispatchAsync([this] { answerCalls(); });
  return 1;
}

void BusApplicationActions::answerCalls() {
  if (!_actions.empty()) {
    for (const Call& call : std::exchange(_calls, {})) {
      answer(call);
    }
  }
}

/// A call whose answer cannot be sent has lost its caller.
void BusApplicationActions::answer(const Call& call) const {
  const auto action = _actions.find(call.name);
  if (action == _actions.end()) {
    static_cast<void>(sd_bus_reply_method_errorf(call.message.get(), SD_BUS_ERROR_INVALID_ARGS,
                                                 "There is no action \"%s\".", call.name.c_str()));
    return;
  }
  // It may remove itself, or the program may leave meanwhile.
  const auto handler = action->second;
  (*handler)(call.parameter);
  static_cast<void>(sd_bus_reply_method_return(call.message.get(), nullptr));
}

}  // namespace quennel
