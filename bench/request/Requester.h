#pragma once

#include <systemd/sd-bus.h>

#include <memory>
#include <string>
#include <vector>

namespace quennel::bench {

/// The program that asks for files: bare sd-bus, so that as little as possible of what is measured
/// is its own. Throws std::runtime_error when the bus does not answer.
class Requester {
 public:
  explicit Requester(const std::string& address);

  struct UnrefMessage {
    void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
  };
  using Request = std::unique_ptr<sd_bus_message, UnrefMessage>;

  /// A call of Open for a new file in the folder.
  Request makeRequest(const std::string& service, const std::string& folder);

  /// Sends the request, or as much of it as the bus takes now.
  void send(const Request& request);

  /// Sends what is still to be sent.
  void flush();

  /// Asks the service for a sign of life and waits for it.
  void ping(const std::string& service);

  /// Waits until `watch`, a descriptor, is readable, sending what is still to be sent. Answers are
  /// left where they are, to take no time from the service.
  void waitFor(int watch);

  /// Takes in the answers to all that was sent. Throws when one is an error.
  void takeAnswers();

  /// The process that owns the name, 0 when there is none.
  int processOf(const std::string& service);

 private:
  struct CloseBus {
    void operator()(sd_bus* bus) const { sd_bus_flush_close_unref(bus); }
  };

  std::unique_ptr<sd_bus, CloseBus> _bus;
  int _unanswered = 0;
  std::string _error;
};

}  // namespace quennel::bench
