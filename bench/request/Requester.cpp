#include "bench/request/Requester.h"

#include <poll.h>

#include <cstdint>
#include <cstring>
#include <stdexcept>

namespace quennel::bench {

namespace {

void throwOnFailure(int result, const char* what) {
  if (result < 0) {
    throw std::runtime_error(std::string(what) + ": " + std::strerror(-result));
  }
}

}  // namespace

Requester::Requester(const std::string& address) {
  sd_bus* bus = nullptr;
  throwOnFailure(sd_bus_new(&bus), "sd_bus_new");
  _bus.reset(bus);
  throwOnFailure(sd_bus_set_address(bus, address.c_str()), "sd_bus_set_address");
  throwOnFailure(sd_bus_set_bus_client(bus, 1), "sd_bus_set_bus_client");
  throwOnFailure(sd_bus_start(bus), "sd_bus_start");
  processOf("org.freedesktop.DBus");  // from here on the connection is ready
}

Requester::Request Requester::makeRequest(const std::string& service, const std::string& folder) {
  sd_bus_message* message = nullptr;
  throwOnFailure(sd_bus_message_new_method_call(_bus.get(), &message, service.c_str(),
                                                "/net/brellow/QuennelHelper",
                                                "org.freedesktop.Application", "Open"),
                 "sd_bus_message_new_method_call");
  Request request(message);
  throwOnFailure(
      sd_bus_message_append(message, "asa{sv}", 1, ("quennel://" + folder + "?0").c_str(), 0),
      "sd_bus_message_append");
  return request;
}

void Requester::send(const Request& request) {
  const auto take = [](sd_bus_message* answer, void* self, sd_bus_error*) {
    auto* const requester = static_cast<Requester*>(self);
    --requester->_unanswered;
    if (const auto* const error = sd_bus_message_get_error(answer)) {
      requester->_error = std::string(error->name) + ": " + error->message;
    }
    return 0;
  };
  throwOnFailure(sd_bus_call_async(_bus.get(), nullptr, request.get(), take, this, UINT64_MAX),
                 "sd_bus_call_async");
  ++_unanswered;
}

void Requester::flush() { throwOnFailure(sd_bus_flush(_bus.get()), "sd_bus_flush"); }

void Requester::ping(const std::string& service) {
  throwOnFailure(sd_bus_call_method(_bus.get(), service.c_str(), "/net/brellow/QuennelHelper",
                                    "org.freedesktop.DBus.Peer", "Ping", nullptr, nullptr, ""),
                 "Ping");
}

void Requester::waitFor(int watch) {
  for (;;) {
    const int events = sd_bus_get_events(_bus.get());
    throwOnFailure(events, "sd_bus_get_events");
    const bool hasMoreToSend = (events & POLLOUT) != 0;
    pollfd polled[] = {{watch, POLLIN, 0},
                       {hasMoreToSend ? sd_bus_get_fd(_bus.get()) : -1, POLLIN | POLLOUT, 0}};
    if (poll(polled, 2, 20'000) <= 0) {
      throw std::runtime_error("no file was made within 20 s");
    }
    if (polled[0].revents) {
      return;
    }
    throwOnFailure(sd_bus_process(_bus.get(), nullptr), "sd_bus_process");
  }
}

void Requester::takeAnswers() {
  while (_unanswered > 0) {
    const int processed = sd_bus_process(_bus.get(), nullptr);
    throwOnFailure(processed, "sd_bus_process");
    if (processed == 0) {
      throwOnFailure(sd_bus_wait(_bus.get(), 20'000'000), "sd_bus_wait");
    }
  }
  if (!_error.empty()) {
    throw std::runtime_error(_error);
  }
}

int Requester::processOf(const std::string& service) {
  sd_bus_message* answer = nullptr;
  if (sd_bus_call_method(_bus.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus",
                         "org.freedesktop.DBus", "GetConnectionUnixProcessID", nullptr, &answer,
                         "s", service.c_str()) < 0) {
    return 0;
  }
  const Request owned(answer);
  std::uint32_t process = 0;
  throwOnFailure(sd_bus_message_read(answer, "u", &process), "sd_bus_message_read");
  return static_cast<int>(process);
}

}  // namespace quennel::bench
