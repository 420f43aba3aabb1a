#include "platform/linux/scope/HandleSearch.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <climits>
#include <cstddef>
#include <string_view>

#include "platform/linux/scope/DetachedChild.h"
#include "platform/linux/scope/FileHandle.h"

namespace quennel {

namespace {

using Path = std::array<char, PATH_MAX>;

struct Request {
  FileHandle handle;
  Path base;
};

constexpr int answerTimeout = 1000;  // milliseconds
constexpr int idleTimeout = 100;
constexpr unsigned int mostSeconds = 2;  // for one search

// From here to `serve` the code runs in the child as well, which must not allocate or lock
// anything.

/// The path of an open folder; empty when that cannot be told.
std::string_view readPath(int descriptor, Path& path) {
  constexpr std::string_view prefix = "/proc/self/fd/";
  std::array<char, prefix.size() + 12> link{};
  char* const number = std::copy(prefix.begin(), prefix.end(), link.data());
  std::to_chars(number, link.data() + link.size() - 1, descriptor);
  const ssize_t size = readlink(link.data(), path.data(), path.size());
  return {path.data(), size > 0 ? static_cast<std::size_t>(size) : 0};
}

/// Empty, with errno, when it is not found.
std::string_view search(Request& request, Path& path) {
  const FileDescriptor base(open(request.base.data(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!base) {
    return {};
  }
  const FileDescriptor found(
      open_by_handle_at(base.get(), request.handle.head(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  return found ? readPath(found.get(), path) : std::string_view();
}

bool writeFile(const char* path, std::string_view text) {
  const FileDescriptor file(open(path, O_WRONLY | O_CLOEXEC));
  return file && write(file.get(), text.data(), text.size()) == static_cast<ssize_t>(text.size());
}

/// In the new namespaces the user keeps the own number, and gains every right over what is the
/// user's own.
bool enterNamespaces(std::string_view userMap, std::string_view groupMap) {
  return unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0 && writeFile("/proc/self/setgroups", "deny") &&
         writeFile("/proc/self/uid_map", userMap) && writeFile("/proc/self/gid_map", groupMap);
}

void serve(int client, std::string_view userMap, std::string_view groupMap) {
  Request request;
  Path path;
  const bool entered = enterNamespaces(userMap, groupMap);
  while (entered && waitForInput(client, idleTimeout) &&
         recv(client, &request, sizeof request, 0) == static_cast<ssize_t>(sizeof request)) {
    alarm(mostSeconds);
    const std::string_view found = search(request, path);
    // An empty message would read as the end of the connection.
    const std::string_view answer = found.empty() ? std::string_view("-") : found;
    send(client, answer.data(), answer.size(), MSG_NOSIGNAL);
  }
}

std::string identityMap(unsigned int number) {
  return std::to_string(number) + " " + std::to_string(number) + " 1";
}

Request requestFor(const DirectoryIdentity& directory, const std::string& base) {
  Request request{FileHandle(directory.handleType, directory.handle), {}};
  std::copy(base.begin(), base.end(), request.base.begin());
  return request;
}

/// Empty at the end of the connection.
std::string receive(int child) {
  Path answer;
  const ssize_t size = recv(child, answer.data(), answer.size(), 0);
  return {answer.data(), size > 0 ? static_cast<std::size_t>(size) : 0};
}

}  // namespace

std::optional<std::string> HandleSearch::pathOfDirectory(const DirectoryIdentity& directory,
                                                         const std::string& base) {
  if (directory.handle.empty() || directory.handle.size() > MAX_HANDLE_SZ ||
      base.size() >= PATH_MAX) {
    return std::nullopt;
  }
  Request request = requestFor(directory, base);
  Path path;
  errno = 0;
  std::string found(search(request, path));
  if (found.empty() && errno == EPERM) {
    found = askChild({reinterpret_cast<const char*>(&request), sizeof request});
  }
  return found.starts_with('/') ? std::optional(std::move(found)) : std::nullopt;
}

std::string HandleSearch::askChild(std::string_view request) {
  // A child that leaves just now does not answer; the next one does, or none ever will.
  bool fresh = false;
  while (!fresh && !_refused) {
    fresh = !isServing();
    if (fresh) {
      start();
    }
    send(_child.get(), request.data(), request.size(), MSG_NOSIGNAL);
    if (!waitForInput(_child.get(), answerTimeout)) {
      _child.reset();
      return {};
    }
    std::string found = receive(_child.get());
    if (!found.empty()) {
      return found;
    }
    _child.reset();
    _refused = fresh;
  }
  return {};
}

bool HandleSearch::isServing() const {
  // Without a question the only thing to read is the end of the connection.
  return _child && !waitForInput(_child.get(), 0);
}

void HandleSearch::start() {
  const std::string userMap = identityMap(geteuid());
  const std::string groupMap = identityMap(getegid());
  _child = startDetachedChild(mostSeconds, [&](int socket) { serve(socket, userMap, groupMap); });
}

}  // namespace quennel
