#pragma once

#include <systemd/sd-bus.h>

#include <cstdint>
#include <memory>
#include <string>

#include "platform/linux/bus/BusTypes.h"
#include "platform/linux/events/EventRunLoop.h"
#include "platform/linux/events/EventSource.h"

namespace quennel {

/// This process's connection to the user's session bus, served by the run loop. Main thread only.
///
/// The callbacks of objects, matches and calls run inside the dispatch of an event: they take in
/// the message and queue work, nothing more.
class SessionBus {
 public:
  /// Connects; the bus's greeting is not waited for, what is sent meanwhile goes out behind it.
  /// Without an address it is the bus of the user's session. There may be none: then everything
  /// that uses this object does without.
  explicit SessionBus(EventRunLoop& runLoop, const std::string& address = {});
  SessionBus(const SessionBus&) = delete;
  SessionBus& operator=(const SessionBus&) = delete;
  /// Sends what is still to be sent and closes the connection.
  ~SessionBus();

  /// Whether there is a connection. It may be lost at any time, and does not come back.
  bool isOpen() const { return _ioSource != nullptr; }

  /// For the adapters; null when there never was a bus. On a connection that was lost every call
  /// answers an error at once.
  sd_bus* connection() const { return _bus.get(); }

  EventRunLoop& runLoop() const { return _runLoop; }

  /// Sends the call and serves the run loop until its answer is there, however long that takes.
  /// The answer may be an error message. Null when it could not be sent, or the run loop was
  /// terminated first.
  BusMessage call(sd_bus_message* message);

 private:
  struct CloseBus {
    void operator()(sd_bus* bus) const { sd_bus_flush_close_unref(bus); }
  };
  using Connection = std::unique_ptr<sd_bus, CloseBus>;

  static Connection connect(const std::string& address);
  bool addSources();
  bool updateSources();
  bool updateTimeLimit(std::uint64_t moment);
  void process();
  void disconnect();

  EventRunLoop& _runLoop;
  Connection _bus;
  EventSource _ioSource;
  /// Enabled while messages have been read ahead, which the descriptor does not tell of.
  EventSource _readAheadSource;
  /// Made when the first call with a time limit is waiting for its answer.
  EventSource _timeLimitSource;
};

}  // namespace quennel
