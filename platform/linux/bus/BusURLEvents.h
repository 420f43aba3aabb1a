#pragma once

#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/URLEvents.h"
#include "platform/linux/bus/BusApplicationActions.h"
#include "platform/linux/bus/BusTypes.h"
#include "platform/linux/bus/HelperName.h"
#include "platform/linux/bus/SessionBus.h"

namespace quennel {

/// The URLs that come as calls of `Open` of `org.freedesktop.Application`, and the rule that a
/// session has one helper: the process that owns the bus name.
///
/// A call is answered as soon as it is received; from then on this process has to see that its URLs
/// are handled, by itself or, when it leaves first, by its successor. So from the moment a process
/// has claimed the name until it has released it nothing may end it unasked.
class BusURLEvents final : public URLEvents {
 public:
  static constexpr auto busName = helperBusName;
  static constexpr auto objectPath = helperObjectPath;
  static constexpr auto interfaceName = applicationInterface;

  /// The bus is not owned; it outlives this object.
  explicit BusURLEvents(SessionBus& bus) : _bus(bus) {}

  /// Where calls of `ActivateAction` go; without it every one is refused. Not owned; outlives the
  /// run loop's run.
  void setActions(BusApplicationActions& actions) { _actions = &actions; }

  enum class Role {
    /// This process is the session's helper.
    Helper,
    /// There was one already, which has accepted the URLs. This process is to leave.
    HandedOver,
    /// There is no bus, or it answers nothing of use: this process serves its own URLs only.
    Alone,
    /// The run loop was terminated first. The URLs have been released; this process is to leave.
    Terminated,
  };

  /// Finds out this process's role. `urls` is what it was asked to open when it was started; a
  /// helper, and one that is alone, gets them as its first events. Serves the run loop meanwhile.
  /// Call it once, before `run`.
  Role claim(const std::vector<std::string>& urls);

  /// Gives up the name and hands over to the next helper, which the bus starts for it, every URL
  /// that was received and not handled. Answers those that could not be handed over, which only
  /// happens where the bus does not know how to start the helper. Call it when `run` has returned.
  std::vector<std::string> release();

  [[nodiscard]] std::unique_ptr<Registration> setEventHandler(URLEvent::Handler handler) override;

  /// Calls `handler` from the main queue whenever somebody has called `Activate`, which another
  /// process of this program does that was started with nothing to open. May be null.
  void setActivateHandler(std::function<void()> handler) { _activateHandler = std::move(handler); }

 private:
  enum class Answer { Yes, No, Failed };
  class HandlerRegistration;

  static int open(sd_bus_message* message, void* self, sd_bus_error* error);
  static int activate(sd_bus_message* message, void* self, sd_bus_error* error);
  static int activateAction(sd_bus_message* message, void* self, sd_bus_error* error);
  static const sd_bus_vtable methods[];

  bool publish();
  Answer requestName();
  Answer handOver(const std::vector<std::string>& urls, const std::string& token);
  void keepOwn(const std::vector<std::string>& urls, const std::string& token);
  bool sendOn(const URLEvent& event);
  void keep(URLEvent event);
  void deliverNext();

  SessionBus& _bus;
  BusApplicationActions* _actions = nullptr;
  BusSlot _object;
  bool _ownsName = false;
  std::deque<URLEvent> _kept;
  URLEvent::Handler _handler;
  std::function<void()> _activateHandler;
  HandlerRegistration* _registration = nullptr;
};

}  // namespace quennel
