#include "platform/linux/bus/SessionBus.h"

#include <ctime>

namespace quennel {

namespace {

/// How many messages one event takes in before the work that they queued gets its turn.
constexpr int messagesPerTurn = 64;

}  // namespace

// sd_bus_attach_event would do, but wakes up through a timer for every message that has been read
// ahead: three system calls each.
SessionBus::SessionBus(EventRunLoop& runLoop, const std::string& address)
    : _runLoop(runLoop), _bus(connect(address)) {
  if (_bus && !addSources()) {
    disconnect();
  }
}

SessionBus::~SessionBus() = default;

SessionBus::Connection SessionBus::connect(const std::string& address) {
  sd_bus* bus = nullptr;
  if (address.empty()) {
    return sd_bus_open_user(&bus) < 0 ? nullptr : Connection(bus);
  }
  if (sd_bus_new(&bus) < 0) {
    return nullptr;
  }
  Connection connection(bus);
  if (sd_bus_set_address(bus, address.c_str()) < 0 || sd_bus_set_bus_client(bus, 1) < 0 ||
      sd_bus_set_trusted(bus, 1) < 0 || sd_bus_start(bus) < 0) {
    return nullptr;
  }
  return connection;
}

bool SessionBus::addSources() {
  const auto processEvent = [](sd_event_source*, int, std::uint32_t, void* self) {
    static_cast<SessionBus*>(self)->process();
    return 0;
  };
  const auto processReadAhead = [](sd_event_source*, void* self) {
    static_cast<SessionBus*>(self)->process();
    return 0;
  };
  const auto prepare = [](sd_event_source*, void* self) {
    auto* const bus = static_cast<SessionBus*>(self);
    if (!bus->updateSources()) {
      bus->disconnect();
    }
    return 0;
  };
  const int descriptor = sd_bus_get_fd(_bus.get());
  sd_event_source* source = nullptr;
  if (descriptor < 0 ||
      sd_event_add_io(_runLoop.handle(), &source, descriptor, 0, processEvent, this) < 0) {
    return false;
  }
  _ioSource.reset(source);
  if (sd_event_add_defer(_runLoop.handle(), &source, processReadAhead, this) < 0) {
    return false;
  }
  _readAheadSource.reset(source);
  return sd_event_source_set_prepare(_ioSource.get(), prepare) >= 0;
}

/// Runs before each wait.
bool SessionBus::updateSources() {
  const int events = sd_bus_get_events(_bus.get());
  std::uint64_t moment = UINT64_MAX;
  if (events < 0 || sd_bus_get_timeout(_bus.get(), &moment) < 0) {
    return false;
  }
  const int readAhead = moment == 0 ? SD_EVENT_ON : SD_EVENT_OFF;
  return sd_event_source_set_io_events(_ioSource.get(), static_cast<std::uint32_t>(events)) >= 0 &&
         sd_event_source_set_enabled(_readAheadSource.get(), readAhead) >= 0 &&
         updateTimeLimit(moment);
}

/// `moment` is when the next call has waited long enough, in microseconds of the monotonic clock.
/// The greeting has such a limit, too, but a timer only for that would cost every start its making.
bool SessionBus::updateTimeLimit(std::uint64_t moment) {
  if (moment == 0 || moment == UINT64_MAX || sd_bus_is_ready(_bus.get()) <= 0) {
    return !_timeLimitSource ||
           sd_event_source_set_enabled(_timeLimitSource.get(), SD_EVENT_OFF) >= 0;
  }
  if (_timeLimitSource) {
    return sd_event_source_set_time(_timeLimitSource.get(), moment) >= 0 &&
           sd_event_source_set_enabled(_timeLimitSource.get(), SD_EVENT_ONESHOT) >= 0;
  }
  const auto processLate = [](sd_event_source*, std::uint64_t, void* self) {
    static_cast<SessionBus*>(self)->process();
    return 0;
  };
  constexpr std::uint64_t accuracy = 1;
  sd_event_source* source = nullptr;
  if (sd_event_add_time(_runLoop.handle(), &source, CLOCK_MONOTONIC, moment, accuracy, processLate,
                        this) < 0) {
    return false;
  }
  _timeLimitSource.reset(source);
  return true;
}

void SessionBus::process() {
  for (int count = 0; count < messagesPerTurn; ++count) {
    const int processed = sd_bus_process(_bus.get(), nullptr);
    if (processed < 0) {
      return disconnect();
    }
    if (processed == 0) {
      return;
    }
  }
}

BusMessage SessionBus::call(sd_bus_message* message) {
  BusMessage answer;
  const auto take = [](sd_bus_message* received, void* taken, sd_bus_error*) {
    static_cast<BusMessage*>(taken)->reset(sd_bus_message_ref(received));
    return 0;
  };
  sd_bus_slot* slot = nullptr;
  if (sd_bus_call_async(_bus.get(), &slot, message, take, &answer, UINT64_MAX) < 0) {
    return nullptr;
  }
  const BusSlot pending(slot);
  // A connection that is lost answers all that is pending.
  _runLoop.runUntil([&] { return answer || !isOpen(); });
  return answer;
}

void SessionBus::disconnect() {
  sd_bus_close(_bus.get());
  _ioSource.reset();
  _readAheadSource.reset();
  _timeLimitSource.reset();
}

}  // namespace quennel
