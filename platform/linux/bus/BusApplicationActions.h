#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/ApplicationActions.h"
#include "platform/linux/bus/BusTypes.h"
#include "platform/linux/bus/SessionBus.h"

namespace quennel {

/// The actions that are asked for by calls of `ActivateAction` of `org.freedesktop.Application`,
/// which `BusURLEvents` hands over.
class BusApplicationActions final : public ApplicationActions {
 public:
  /// The bus is not owned. Outlives the run loop's run.
  explicit BusApplicationActions(SessionBus& bus) : _bus(bus) {}
  BusApplicationActions(const BusApplicationActions&) = delete;
  BusApplicationActions& operator=(const BusApplicationActions&) = delete;

  [[nodiscard]] std::unique_ptr<Registration> addAction(const std::string& name,
                                                        Handler handler) override;

  /// Takes in the call, to be answered later. For a method's callback: negative when it is broken.
  int receive(sd_bus_message* call);

 private:
  class ActionRegistration;
  struct Call {
    BusMessage message;
    std::string name;
    std::optional<PropertyList> parameter;
  };

  void answerCalls();
  void answer(const Call& call) const;

  SessionBus& _bus;
  std::map<std::string, std::shared_ptr<const Handler>> _actions;
  std::vector<Call> _calls;
};

}  // namespace quennel
