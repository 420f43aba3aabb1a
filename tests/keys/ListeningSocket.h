#pragma once

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/linux/base/FileDescriptor.h"

namespace quennel::test {

/// The socket of a display's server that does nothing by itself.
class ListeningSocket {
 public:
  explicit ListeningSocket(const std::string& path)
      : _descriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::copy(path.begin(), path.end(), address.sun_path);
    if (bind(_descriptor.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
        listen(_descriptor.get(), 8) != 0) {
      throw std::runtime_error("no socket at " + path);
    }
  }

  /// Whether a client waits for an answer.
  bool isAsked() const {
    pollfd asked{_descriptor.get(), POLLIN, 0};
    return poll(&asked, 1, 0) > 0;
  }
  /// Answers the next client as a server that lets nobody in.
  void turnDown() {
    FileDescriptor client(accept4(_descriptor.get(), nullptr, nullptr, SOCK_CLOEXEC));
    const char refusal = 0;
    if (!client || send(client.get(), &refusal, 1, MSG_NOSIGNAL) != 1) {
      throw std::runtime_error("nobody asks");
    }
    _clients.push_back(std::move(client));
  }
  /// Ends the next connection without a word.
  void hangUp() { FileDescriptor(accept4(_descriptor.get(), nullptr, nullptr, SOCK_CLOEXEC)); }

  /// The server is gone; its socket stays in the folder.
  void stop() {
    _clients.clear();
    _descriptor.reset();
  }

 private:
  FileDescriptor _descriptor;
  std::vector<FileDescriptor> _clients;
};

}  // namespace quennel::test
