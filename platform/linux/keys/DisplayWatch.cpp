#include "platform/linux/keys/DisplayWatch.h"

#include <sys/epoll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

#include "platform/values/Path.h"

namespace quennel {
namespace {

// A server makes its socket some time before it listens there.
constexpr int attemptLimit = 50;
constexpr std::chrono::milliseconds betweenAttempts{100};

/// Of a socket's name: "X12".
std::optional<int> displayNumber(std::string_view name) {
  int number = 0;
  if (!name.starts_with('X')) {
    return std::nullopt;
  }
  const char* const end = name.data() + name.size();
  const auto parsed = std::from_chars(name.data() + 1, end, number);
  return parsed.ec == std::errc() && parsed.ptr == end && number >= 0 ? std::optional(number)
                                                                      : std::nullopt;
}

/// How a client begins: the order of its bytes, the protocol's version, no proof of who it is. The
/// answer may be a refusal; whoever gives one is there.
bool sendGreeting(const FileDescriptor& socket) {
  constexpr std::array<unsigned char, 12> greeting{'l', 0, 11, 0, 0, 0, 0, 0, 0, 0, 0, 0};
  return send(socket.get(), greeting.data(), greeting.size(), MSG_NOSIGNAL) ==
         static_cast<ssize_t>(greeting.size());
}

}  // namespace

struct DisplayWatch::Question {
  DisplayWatch& watch;
  int number;
  FileDescriptor socket;
  EventSource source;
};

DisplayWatch::DisplayWatch(EventRunLoop& runLoop, Handler handler, std::string folder)
    : _runLoop(runLoop), _handler(std::move(handler)), _folder(std::move(folder)) {}

DisplayWatch::~DisplayWatch() = default;

void DisplayWatch::start() {
  // The first server since the machine was started makes the folder.
  if (!_newSockets && !watch(_folder)) {
    watch(deletingLastPathComponent(_folder));
  }
}

void DisplayWatch::stop() { _newSockets.reset(); }

bool DisplayWatch::watch(const std::string& folder) {
  const auto takeEvent = [](sd_event_source*, const inotify_event* event, void* self) {
    if (event->len > 0) {
      static_cast<DisplayWatch*>(self)->takeNewEntry(event->name);
    }
    return 0;
  };
  sd_event_source* source = nullptr;
  if (sd_event_add_inotify(_runLoop.handle(), &source, folder.c_str(), IN_CREATE | IN_MOVED_TO,
                           takeEvent, this) < 0) {
    return false;
  }
  _newSockets.reset(source);
  return true;
}

void DisplayWatch::takeNewEntry(const std::string& name) {
  if (name == lastPathComponent(_folder)) {
    _runLoop.dispatchAsync([this, life = std::weak_ptr(_life)] {
      if (!life.expired()) {
        stop();
        start();
        lookAround();
      }
    });
  } else if (const auto number = displayNumber(name)) {
    askAgain(*number, attemptLimit);
  }
}

void DisplayWatch::lookAround() {
  std::error_code failure;
  for (const auto& entry : std::filesystem::directory_iterator(_folder, failure)) {
    if (const auto number = displayNumber(entry.path().filename().native())) {
      ask(*number, 1);
    }
  }
}

bool DisplayWatch::isThere(int number) const { return static_cast<bool>(connectTo(number)); }

FileDescriptor DisplayWatch::connectTo(int number) const {
  const std::string path = _folder + "/X" + std::to_string(number);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) {
    return {};
  }
  std::copy(path.begin(), path.end(), address.sun_path);
  FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  const bool isConnected =
      socket && connect(socket.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
  return isConnected ? std::move(socket) : FileDescriptor();
}

void DisplayWatch::ask(int number, int attempts) {
  FileDescriptor socket = connectTo(number);
  if (!socket || !sendGreeting(socket)) {
    return attempts > 1 ? askAgain(number, attempts - 1) : void();
  }
  const auto takeAnswer = [](sd_event_source*, int, std::uint32_t, void* question) {
    auto& answered = *static_cast<Question*>(question);
    answered.watch.takeAnswer(answered);
    return 0;
  };
  _questions.push_back({*this, number, std::move(socket), nullptr});
  Question& question = _questions.back();
  sd_event_source* source = nullptr;
  if (sd_event_add_io(_runLoop.handle(), &source, question.socket.get(), EPOLLIN, takeAnswer,
                      &question) < 0) {
    return _questions.pop_back();
  }
  question.source.reset(source);
}

void DisplayWatch::askAgain(int number, int attempts) {
  _runLoop.dispatchAfter(betweenAttempts, [this, number, attempts, life = std::weak_ptr(_life)] {
    if (!life.expired()) {
      ask(number, attempts);
    }
  });
}

void DisplayWatch::takeAnswer(Question& question) {
  char first = 0;
  const bool isAnswered = recv(question.socket.get(), &first, 1, MSG_DONTWAIT) == 1;
  const int number = question.number;
  std::erase_if(_questions, [&](const Question& each) { return &each == &question; });
  if (isAnswered) {
    _runLoop.dispatchAsync([this, number, life = std::weak_ptr(_life)] {
      if (!life.expired()) {
        _handler(number);
      }
    });
  }
}

}  // namespace quennel
