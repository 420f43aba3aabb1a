#include "tests/fuzz/BusStandIn.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>

#include "platform/linux/bus/BusTypes.h"
#include "tests/fuzz/Require.h"

namespace quennel::test {

BusStandIn::BusStandIn() {
  const auto listening = listen();
  _bus = std::make_unique<SessionBus>(_runLoop, _address);
  accept(listening);
  _urlEvents = std::make_unique<BusURLEvents>(*_bus);
  _center = std::make_unique<BusDistributedNotificationCenter>(*_bus);
  require(_urlEvents->claim({}) == BusURLEvents::Role::Helper, "the stand-in grants the name");
  _registrations.push_back(
      _urlEvents->setEventHandler([this](const URLEvent& event) { opened.push_back(event); }));
  _registrations.push_back(_center->addObserver(
      BusURLEvents::busName,
      [this](const Notification& notification) { posted.push_back(notification); }));
}

BusStandIn::~BusStandIn() = default;

FileDescriptor BusStandIn::listen() {
  static int count = 0;
  const std::string name =
      "quennel-fuzz-" + std::to_string(getpid()) + "-" + std::to_string(++count);
  _address = "unix:abstract=" + name;
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::ranges::copy(name, address.sun_path + 1);
  const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + name.size());
  FileDescriptor listening(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  require(listening &&
              bind(listening.get(), reinterpret_cast<const sockaddr*>(&address), length) == 0 &&
              ::listen(listening.get(), 1) == 0,
          "there is a socket");
  return listening;
}

void BusStandIn::accept(const FileDescriptor& listening) {
  const int connection = accept4(listening.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
  require(connection >= 0, "the helper connects");
  sd_bus* daemon = nullptr;
  require(sd_bus_new(&daemon) >= 0, "sd_bus_new");
  _daemon.reset(daemon);
  require(sd_bus_set_fd(daemon, connection, connection) >= 0 &&
              sd_bus_set_server(daemon, 1, {}) >= 0 && sd_bus_negotiate_fds(daemon, 1) >= 0 &&
              sd_bus_add_filter(daemon, nullptr, receive, this) >= 0 && sd_bus_start(daemon) >= 0 &&
              sd_bus_attach_event(daemon, _runLoop.handle(), 0) >= 0,
          "the stand-in serves");
}

/// Answers the bus's own operations and notes the answers of the helper.
int BusStandIn::receive(sd_bus_message* message, void* self, sd_bus_error*) {
  std::uint64_t cookie = 0;
  if (sd_bus_message_get_reply_cookie(message, &cookie) >= 0) {
    static_cast<BusStandIn*>(self)->_answered.push_back(cookie);
    return 0;
  }
  if (sd_bus_message_is_method_call(message, nullptr, "Hello") > 0) {
    return sd_bus_reply_method_return(message, "s", ":1.1");
  }
  if (sd_bus_message_is_method_call(message, nullptr, "RequestName") > 0) {
    return sd_bus_reply_method_return(message, "u", 1);
  }
  return sd_bus_message_is_method_call(message, nullptr, nullptr) > 0
             ? sd_bus_reply_method_return(message, nullptr)
             : 0;
}

void BusStandIn::pass(const std::string& bytes) {
  opened.clear();
  posted.clear();
  _answered.clear();
  const int socket = sd_bus_get_fd(_daemon.get());
  const auto sent = send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
  require(sent == static_cast<ssize_t>(bytes.size()), "a message fits the socket's buffer");
  bool isAnswered = false;
  const auto note = [](sd_bus_message*, void* answered, sd_bus_error*) {
    *static_cast<bool*>(answered) = true;
    return 0;
  };
  sd_bus_slot* slot = nullptr;
  require(sd_bus_call_method_async(_daemon.get(), &slot, nullptr, "/", "org.freedesktop.DBus.Peer",
                                   "Ping", note, &isAnswered, nullptr) >= 0,
          "the helper can be asked");
  const BusSlot pending(slot);
  _runLoop.runUntil([&] { return isAnswered || !isOpen(); });
  _runLoop.serve();
}

int BusStandIn::countAnswersTo(std::uint32_t serial) const {
  return static_cast<int>(std::ranges::count(_answered, serial));
}

}  // namespace quennel::test
